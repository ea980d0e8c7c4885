set(scene_sources
  Object3D.cpp)
