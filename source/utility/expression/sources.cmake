set(expression_sources
  ExpressionEvaluator.cpp
  ExpressionOperators.cpp)
