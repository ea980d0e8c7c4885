set(expression_sources)
