// Source text to code, and code to a program that is ready to run.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "script/language/CodeBuffer.h"
#include "script/language/Parser.h"
#include "script/language/StreamScanner.h"
#include "script/language/Verifier.h"
#include "script/vm/ScriptVM.h"

namespace {

// As scripts of a game look: comments, a class with members, loops, tests, calls through several members.
constexpr const char* unit = R"(
// Moves things along a path.
class Walker# {
    object position, speed, path, on_arrival;

    start(way, pace) {
        position := 0;
        speed := pace;
        path := way;
        return this;
    }

    step(seconds) {
        object next := position + speed * seconds;
        if (next >= path.length) {
            next := path.length;
            if (on_arrival.boolean) { on_arrival(this, "arrived at " + path.name); }
        } else if (next < 0) {
            next := 0;
        }
        position := next;
    }
}

object walkers#;

/* All walkers of one level.
   They start one after the other. */
update#(list, seconds) {
    object count := 0, name;
    for (index, walker in list) {
        name := "walker" + index;
        if (walker.value.speed > 0.05 and not walker.value.path.closed) {
            walker.value.step(seconds * (1 + count / 10));
            count := count + 1;
        }
        while (walker.value.position > 100) {
            walker.value.start(walkers#.paths.get(name), -walker.value.speed % 7);
            if (count = 12 or name <> "walker3") { return walker; }
        }
    }
    return count;
}
)";

/// The text of many units, each with its own names. Objects of a file come first.
std::string large_source(int units) {
    std::string objects;
    std::string rest;
    const std::string text = unit;
    for (int i = 0; i < units; ++i) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            for (std::size_t at = 0; (at = line.find('#')) != std::string::npos;)
                line.replace(at, 1, std::to_string(i));
            (line.starts_with("object") ? objects : rest) += line + "\n";
        }
    }
    return objects + rest;
}

bool compile(const std::string& source, kst::script::CodeBuffer& code) {
    std::istringstream stream(source);
    kst::script::StreamScanner scanner(stream, "large.kvs");
    kst::script::Parser parser(scanner);
    return parser.parse() && parser.generate(code);
}

void count_lines(benchmark::State& state, const std::string& source) {
    state.counters["lines/s"] = {static_cast<double>(std::ranges::count(source, '\n')),
                                 benchmark::Counter::kIsIterationInvariantRate};
}

void compile_source(benchmark::State& state) {
    const std::string source = large_source(static_cast<int>(state.range(0)));
    kst::script::CodeBuffer code(/*keeps_lines=*/true);
    if (!compile(source, code))
        return state.SkipWithError("does not compile");
    kst::script::verify_code(code.code(), "large.kvs");
    for (auto _ : state)
        benchmark::DoNotOptimize(compile(source, code));
    count_lines(state, source);
}

/// The check of code that comes from disk, and the loading, by the same measure.
void verify_and_load(benchmark::State& state) {
    const std::string source = large_source(static_cast<int>(state.range(0)));
    kst::script::CodeBuffer code;
    if (!compile(source, code))
        return state.SkipWithError("does not compile");
    for (auto _ : state) {
        kst::script::verify_code(code.code(), "large.kvs");
        std::vector<std::uint8_t> bytes(code.code().begin(), code.code().end());
        kst::script::ScriptVM program(bytes, nullptr);
        program.load();
        benchmark::DoNotOptimize(program.global_count());
    }
    count_lines(state, source);
}

BENCHMARK(compile_source)->Name("script/compile")->Arg(20)->Arg(400)->Unit(benchmark::kMillisecond);
BENCHMARK(verify_and_load)->Name("script/verify_and_load")->Arg(400)->Unit(benchmark::kMillisecond);

} // namespace
