#pragma once

#include "script/language/CodeBuffer.h"
#include "script/language/Parser.h"
#include "script/language/StreamScanner.h"
#include "script/language/Verifier.h"
#include "script/value/DSError.h"
#include "script/vm/ScriptVM.h"
#include "source/utility/xml/idstring.h"

#include <sstream>
#include <string>
#include <vector>

namespace kst::script {

/// The string of what `main` of a program gives, or the text of the error.
inline std::string result_of(const std::string& source, ScriptInterface* imports = nullptr) {
    std::istringstream stream(source);
    StreamScanner scanner(stream, "test");
    Parser parser(scanner);
    CodeBuffer code;
    if (!parser.parse() || !parser.generate(code))
        return parser.errors();
    std::vector<std::uint8_t> bytes(code.code().begin(), code.code().end());
    verify_code(bytes, "test");
    ScriptVM program(bytes, imports);
    try {
        program.load();
        return program.call(intern("main"), {}).to_string();
    } catch (const DSBaseError& error) {
        return error.what();
    }
}

} // namespace kst::script
