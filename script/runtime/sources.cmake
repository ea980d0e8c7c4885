set(runtime_sources
  ContainersLibrary.cpp
  ScriptBitField.cpp
  ScriptList.cpp
  ScriptMap.cpp
  ScriptTCList.cpp
  ScriptVector.cpp
  callbacks.cpp)
