set(math_sources
  GQuat.cpp
  Matrix4.cpp
  SlerpArc.cpp
  Vector.cpp)
