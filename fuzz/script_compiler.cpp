// Any text as source: messages or code, and code that is generated passes the check of code from disk.

#include "script/language/Parser.h"
#include "script/language/StreamScanner.h"
#include "script/language/Verifier.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream stream(std::string(data, data + size));
    kst::script::StreamScanner scanner(stream, "fuzz.kvs");
    kst::script::Parser parser(scanner);
    if (!parser.parse()) {
        if (parser.errors().empty())
            std::abort();
        return 0;
    }
    std::ostringstream listing;
    parser.print(listing);
    kst::script::CodeBuffer code(/*keeps_lines=*/true);
    if (parser.generate(code) != parser.errors().empty() || code.lines().size() != code.size())
        std::abort();
    if (parser.errors().empty())
        kst::script::verify_code(code.code(), "fuzz.kvx");
    return 0;
}
