set(platform_sources
  AsyncRead.cpp
  Directory.cpp
  EmbeddedResources.cpp
  File.cpp
  HostPath.cpp
  PathInfo.cpp
  PerformanceCounter.cpp)
