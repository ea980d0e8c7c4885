#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <vector>

#include "script/value/Library.h"
#include "script/vm/NameTable.h"
#include "script/vm/VMError.h"

namespace kst::script {

struct Instruction;
struct InstructionCode;

/// One loaded program: its code, globals and classes; and, as a library, the functions and classes that it exports to
/// others. Globals belong to the program, not to the code: two programs on one code share nothing but resolved names.
///
/// The code must have been verified, must be writable (names in it are resolved in place at their first execution) and
/// must outlive the program. `imports` is asked while the declarations run, and may be null. All programs share one set
/// of stacks, see ScriptStacks; one of them runs at a time, but they may call each other.
///
/// A failed run throws VMError with the place of the fault. Value and local stack are then as they were before the run;
/// the call stack stands as at the fault, for a trace, until the next run from outside.
class ScriptVM final : public Library {
public:
    class ScriptedClassBase;
    class ClassFunction;
    class ClassMethod;
    class ScriptedClassFactory;
    class ClassInstance;
    class ClassCalledInstance;
    class ScriptedLibrary;
    class ClassLocalRef;
    class ClassCurrentClassMemberRef;
    class ClassGlobalRef;

    ScriptVM(std::span<std::uint8_t> code, ScriptInterface* imports);
    /// The values that the program gave out stay, dead: using them is a DSError that says so.
    ~ScriptVM() override;
    ScriptVM(const ScriptVM&) = delete;
    ScriptVM& operator=(const ScriptVM&) = delete;

    /// Runs the declarations at the start of the code, which fill globals and classes. Once, before anything else.
    void load();

    /// Runs from an offset, at which a function begins, to the return, with the arguments as the first locals. `results` values stay on the value
    /// stack, void where the code left fewer; `take_result` takes the topmost.
    void run(std::uint32_t offset, Arguments arguments, std::uint32_t results);
    static ScriptValue take_result();

    /// Calls a function by name; void if there is none.
    ScriptValue call(idstring name, Arguments arguments);
    bool has_function(idstring name) { return functions_.find(name) != NameTable::not_found; }

    /// Exported are functions and classes.
    bool has(idstring id) override { return exports_.find(id) != NameTable::not_found; }
    ScriptValue value() override;
    /// Void for a name that is not exported.
    ScriptValue get(idstring id) override;
    void visit(LibraryVisitor& visitor) override;

    /// A line for each live program, and totals.
    static void dump(std::ostream& stream);
    static bool is_live(const ScriptVM* vm);

    std::span<const std::uint8_t> code() const { return code_; }
    std::size_t global_count() const { return global_count_; }

private:
    friend class Interpreter;

    void declare_import(idstring name);
    void declare_object(idstring name);
    void declare_function(idstring name, std::uint32_t offset);
    void begin_class(idstring name);
    void end_class();
    /// A registry number that this program clears at its end.
    std::uint32_t take_number(const Instruction* start, ScriptedClassBase* scripted_class);
    /// Throws DSError if no function begins there.
    const Instruction& start_at(std::uint32_t offset) const;
    void add_global(ScriptValue value);

    std::span<std::uint8_t> code_;
    std::unique_ptr<InstructionCode> run_code_; ///< Made of the code when the program is.
    ScriptInterface* imports_;
    NameTable exports_;   ///< Name to index of the global.
    NameTable functions_; ///< Name to offset in the code.
    /// Of their full number from the start. Void until they are declared, which happens in order.
    std::vector<ScriptValue> globals_;
    std::uint32_t global_count_ = 0;
    std::unique_ptr<ScriptedClassBase> open_class_;
    std::vector<std::unique_ptr<ScriptedClassBase>> classes_;
    std::vector<std::uint32_t> numbers_;
    std::uint32_t library_number_ = NameTable::not_found; ///< Taken when first asked for.
    ClassGlobalRef* global_ref_class_;
};

} // namespace kst::script
