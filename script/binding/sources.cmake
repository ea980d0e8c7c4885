set(binding_sources
  LibraryHelper.cpp
  MemberFactory.cpp
  MemberSet.cpp
  NativeObjects.cpp)
