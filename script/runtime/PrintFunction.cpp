#include "script/runtime/PrintFunction.h"

#include <ostream>
#include <string>

namespace kst::script {

ScriptValue PrintFunction::call(Arguments arguments) {
    std::string line;
    for (const ScriptValue& argument : arguments) {
        if (&argument != arguments.data())
            line += ' ';
        line += argument.to_string();
    }
    stream_ << line << '\n';
    return {};
}

} // namespace kst::script
