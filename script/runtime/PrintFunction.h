#pragma once

#include <iosfwd>
#include <string_view>

#include "script/binding/bind.h"

namespace kst::script {

/// A callable: writes the string of each argument, one blank between them, and a line feed. Gives void.
class PrintFunction final : public Bound<PrintFunction> {
public:
    static constexpr std::string_view script_name = "print";
    static void bind(StaticMemberSet<PrintFunction>&) {}

    /// The stream is not owned and must outlive the object.
    explicit PrintFunction(std::ostream& stream) : stream_(stream) {}

    ScriptValue call(Arguments arguments) override;

private:
    std::ostream& stream_;
};

} // namespace kst::script
