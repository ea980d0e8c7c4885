set(runtime_sources
  ArchiveScanner.cpp
  DirectoryLibrary.cpp
  PrintFunction.cpp
  ScriptRTE.cpp
  UnionLibrary.cpp
  save_compiled_file.cpp)
