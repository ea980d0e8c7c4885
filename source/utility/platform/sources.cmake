set(platform_sources
  Directory.cpp
  File.cpp
  HostPath.cpp
  PathInfo.cpp)
