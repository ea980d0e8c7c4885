// Any text is an expression with a value, the same one each time.

#include "source/utility/expression/ExpressionEvaluator.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

kst::ExpressionValue value_of(std::string_view text) {
    kst::ExpressionEvaluator evaluator;
    kst::ExpressionProgram program;
    evaluator.compile(text, program);
    return evaluator.evaluate_vector(program);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const kst::ExpressionValue first = value_of(text);
    const kst::ExpressionValue second = value_of(text);
    if (std::memcmp(&first, &second, sizeof(first)) != 0)
        std::abort();
    return 0;
}
