set(language_sources
  CodeBuffer.cpp
  CompiledFile.cpp)
