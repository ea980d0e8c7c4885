#pragma once

#include "source/utility/expression/ExpressionEvaluator.h"

#include <span>

namespace kst {

/// One operator or function that every evaluator knows.
struct BuiltInOperator {
    const char* name;
    std::int32_t precedence;
    ExpressionFunction function;
    bool not_constant = false;
};

/// In order of registration.
std::span<const BuiltInOperator> built_in_operators();

} // namespace kst
