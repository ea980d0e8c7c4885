set(math_sources
  GQuat.cpp
  Matrix4.cpp
  Polar.cpp
  Rotations.cpp
  SlerpArc.cpp
  Vector.cpp
  geometry.cpp)
