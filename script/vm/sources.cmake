set(vm_sources
  Interpreter.cpp
  ObjectClasses.cpp
  ReferenceClasses.cpp
  ScriptStacks.cpp
  ScriptVM.cpp
  ScriptedClass.cpp)
