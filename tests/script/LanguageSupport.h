#pragma once

#include "script/language/Parser.h"
#include "script/language/StreamScanner.h"

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace test_support {

using Bytes = std::vector<std::uint8_t>;

/// What came of a source text named "a.kvs".
struct Compiled {
    std::string errors;
    std::string listing;
    Bytes code;
    std::vector<std::int32_t> lines;
};

inline Compiled compile(const std::string& source) {
    std::istringstream stream(source);
    kst::script::StreamScanner scanner(stream, "a.kvs");
    kst::script::Parser parser(scanner);
    kst::script::CodeBuffer code(/*keeps_lines=*/true);
    Compiled result;
    if (parser.parse()) {
        std::ostringstream listing;
        parser.print(listing);
        result.listing = listing.str();
        parser.generate(code);
    }
    result.errors = parser.errors();
    result.code.assign(code.code().begin(), code.code().end());
    result.lines.assign(code.lines().begin(), code.lines().end());
    return result;
}

inline std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

} // namespace test_support
