set(platform_sources
  File.cpp
  HostPath.cpp)
