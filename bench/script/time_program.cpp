// script_time_program PROGRAM RUNS: the result of main, and the least processor time of a run in seconds.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "script/language/CodeBuffer.h"
#include "script/language/Parser.h"
#include "script/language/StreamScanner.h"
#include "script/language/Verifier.h"
#include "script/runtime/ContainersLibrary.h"
#include "script/runtime/HostLibrary.h"
#include "script/vm/ScriptVM.h"

namespace {

std::vector<std::uint8_t> compile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    kst::script::StreamScanner scanner(stream, path);
    kst::script::Parser parser(scanner);
    kst::script::CodeBuffer code;
    if (!stream || !parser.parse() || !parser.generate(code))
        throw std::runtime_error("cannot compile " + path + "\n" + parser.errors());
    kst::script::verify_code(code.code(), path);
    return {code.code().begin(), code.code().end()};
}

void time_program(const std::string& path, int runs) {
    std::vector<std::uint8_t> code = compile(path);
    kst::script::HostLibrary host;
    host.add<kst::script::ContainersLibrary>("containers");
    kst::script::ScriptVM program(code, &host);
    program.load();
    double best = std::numeric_limits<double>::infinity();
    float result = 0;
    for (int i = 0; i < runs; ++i) {
        const std::clock_t start = std::clock();
        result = program.call(kst::intern("main"), {}).to_number();
        best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    std::printf("%.8g %.6f\n", static_cast<double>(result), best);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: script_time_program PROGRAM RUNS\n");
        return 2;
    }
    try {
        time_program(argv[1], std::atoi(argv[2]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
