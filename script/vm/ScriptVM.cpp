#include "script/vm/ScriptVM.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "script/value/release_values.h"
#include "script/vm/Instruction.h"
#include "script/vm/Interpreter.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ReferenceClasses.h"
#include "script/vm/ScriptStacks.h"
#include "script/vm/ScriptedClass.h"

namespace kst::script {

namespace {

std::vector<const ScriptVM*>& live_programs() {
    static std::vector<const ScriptVM*>& instance = *new std::vector<const ScriptVM*>;
    return instance;
}

} // namespace

ScriptVM::ScriptVM(std::span<std::uint8_t> code, ScriptInterface* imports)
    : code_(code),
      run_code_(std::make_unique<InstructionCode>(translate_code(code))),
      imports_(imports),
      globals_(run_code_->globals),
      global_ref_class_(&ClassGlobalRef::take(*this)) {
    live_programs().push_back(this);
}

// The order matters: first the program is dead to all values, then its values go, and then the classes that their
// releases would have looked for.
ScriptVM::~ScriptVM() {
    ++ScriptStacks::instance().destroyed_programs;
    std::erase(live_programs(), this);
    ProgramRegistry& registry = ProgramRegistry::instance();
    for (const std::uint32_t number : numbers_)
        registry[number] = {};
    global_ref_class_->give_back();
    release_values(std::move(globals_));
    for (const auto& scripted_class : classes_)
        scripted_class->clear_objects();
    for (const std::uint32_t number : numbers_)
        registry.release(number);
}

bool ScriptVM::is_live(const ScriptVM* vm) {
    return std::ranges::find(live_programs(), vm) != live_programs().end();
}

void ScriptVM::load() {
    run(0, {}, 0);
}

void ScriptVM::run(std::uint32_t offset, Arguments arguments, std::uint32_t results) {
    Interpreter::run({this, &start_at(offset)}, arguments, results);
}

ScriptValue ScriptVM::take_result() {
    ValueStack& values = ScriptStacks::instance().values;
    return values.count() == 0 ? ScriptValue() : values.pop();
}

ScriptValue ScriptVM::call(idstring name, Arguments arguments) {
    const std::uint32_t offset = functions_.find(name);
    if (offset == NameTable::not_found)
        return {};
    return Interpreter::call({this, &start_at(offset)}, arguments);
}

ScriptValue ScriptVM::value() {
    if (library_number_ == NameTable::not_found)
        library_number_ = take_number(nullptr, nullptr);
    return {ScriptedLibrary::instance(), library_number_};
}

ScriptValue ScriptVM::get(idstring id) {
    const std::uint32_t index = exports_.find(id);
    return index == NameTable::not_found ? ScriptValue() : globals_[index];
}

void ScriptVM::visit(LibraryVisitor& visitor) {
    for (const auto& scripted_class : classes_)
        visitor.visit_class(scripted_class->name(), scripted_class->live_objects());
}

void ScriptVM::dump(std::ostream& stream) {
    std::size_t total = 0;
    for (const ScriptVM* vm : live_programs()) {
        stream << vm->classes_.size() << " classes \n";
        total += vm->classes_.size();
    }
    stream << std::string(60, '-') << '\n'
           << "Total VMS: " << live_programs().size() << "    Total classes: " << total << '\n';
}

void ScriptVM::declare_import(idstring name) {
    if (imports_ == nullptr || !imports_->has(name))
        throw DSError("Script error: Cant find object to import (" + idstring_text(name) + ")");
    ScriptValue imported = imports_->get(name);
    add_global(std::move(imported));
}

void ScriptVM::declare_object(idstring name) {
    if (open_class_ != nullptr)
        open_class_->declare_object(name);
    else
        add_global({});
}

void ScriptVM::declare_function(idstring name, std::uint32_t offset) {
    const Instruction& start = start_at(offset);
    if (open_class_ != nullptr) {
        open_class_->declare_method(name, start);
        return;
    }
    exports_.add(name, global_count_);
    functions_.add(name, offset);
    add_global({ClassFunction::instance(), take_number(&start, nullptr)});
}

void ScriptVM::begin_class(idstring name) {
    if (open_class_ != nullptr)
        throw DSError("Internal error: Class within a class");
    open_class_ = std::make_unique<ScriptedClassBase>(*this, name);
    const std::uint32_t number = take_number(nullptr, open_class_.get());
    open_class_->set_number(number);
    exports_.add(name, global_count_);
    add_global({ScriptedClassFactory::instance(), number});
}

void ScriptVM::end_class() {
    if (open_class_ == nullptr)
        throw DSError("Internal error: End of no class");
    classes_.push_back(std::move(open_class_));
}

const Instruction& ScriptVM::start_at(std::uint32_t offset) const {
    const Instruction* const start = run_code_->start_at(offset);
    if (start == nullptr)
        throw DSError("Internal error: No function begins here");
    return *start;
}

void ScriptVM::add_global(ScriptValue value) {
    if (global_count_ == globals_.size())
        throw DSError("Internal error: Declarations run twice");
    globals_[global_count_++] = std::move(value);
}

std::uint32_t ScriptVM::take_number(const Instruction* start, ScriptedClassBase* scripted_class) {
    const std::uint32_t number = ProgramRegistry::instance().take({this, start, scripted_class});
    numbers_.push_back(number);
    return number;
}

} // namespace kst::script
