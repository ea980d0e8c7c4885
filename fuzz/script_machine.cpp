// Any bytes as compiled script: what passes the verifier is loaded, and each of its functions runs, on a budget. Errors
// are expected; the stacks must be as before afterwards, and nothing may crash.

#include "script/language/CompiledFile.h"
#include "script/language/Verifier.h"
#include "script/value/BasicClasses.h"
#include "script/vm/ScriptStacks.h"
#include "script/vm/ScriptVM.h"
#include "source/utility/MemoryDataStore.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace kst::script;

constexpr std::uint64_t jumps = 300;

/// The names of the functions that the verified, unresolved code declares.
std::vector<std::string> function_names(const std::vector<std::uint8_t>& code) {
    std::vector<std::string> names;
    bool in_class = false;
    for (std::size_t at = 0; static_cast<Opcode>(code[at]) != Opcode::return_;) {
        const auto opcode = static_cast<Opcode>(code[at++]);
        in_class = opcode == Opcode::begin_class || (in_class && opcode != Opcode::end_class);
        if (opcode == Opcode::end_class)
            continue;
        at += opcode == Opcode::declare_function ? 4 : 0;
        const std::string name = reinterpret_cast<const char*>(&code[at]);
        at += std::max(name.size() + 1, least_name_operand);
        if (opcode == Opcode::declare_function && !in_class)
            names.push_back(name);
    }
    return names;
}

template <typename Work>
void on_budget(Work&& work) {
    ScriptStacks& stacks = ScriptStacks::instance();
    stacks.jump_budget = jumps;
    try {
        work();
    } catch (const DSBaseError&) {
    }
    stacks.jump_budget = std::numeric_limits<std::uint64_t>::max();
    if (stacks.values.count() != 0 || stacks.locals.count() != 0 || stacks.frame_count != 0)
        std::abort();
}

/// Any name can be imported: it is a string.
struct Imports : ScriptInterface {
    bool has(kst::idstring) override { return true; }
    ScriptValue get(kst::idstring id) override { return id_value(id); }
};

void run(std::vector<std::uint8_t>& code) {
    Imports imports;
    const std::vector<std::string> names = function_names(code);
    // The second program finds the names of the first resolved.
    ScriptVM program(code, &imports);
    ScriptVM twin(code, &imports);
    for (ScriptVM* vm : {&program, &twin}) {
        on_budget([&] { vm->load(); });
        for (const std::string& name : names) {
            ScriptValue result;
            on_budget([&] { result = vm->call(kst::intern(name), {}); });
            const std::vector<ScriptValue> arguments{number_value(3), result, twin.value()};
            on_budget([&] { vm->call(kst::intern(name), arguments).to_string(); });
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::Archive archive("fuzz.kvx", std::make_unique<kst::ConstMemoryDataStore>(data, size), 0,
                         static_cast<std::int64_t>(size), false);
    try {
        if (auto file = read_compiled_file(archive, /*skip_debug_block=*/false)) {
            verify_code(file->code, archive.name());
            run(file->code);
        }
    } catch (const CompiledFileError&) {
    }
    return 0;
}
