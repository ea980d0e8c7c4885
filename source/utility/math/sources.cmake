set(math_sources
  GQuat.cpp
  Matrix4.cpp
  Vector.cpp)
