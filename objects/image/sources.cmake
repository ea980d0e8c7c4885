set(image_sources
  GeneralImageParser.cpp
  ImageParserRegistry.cpp)
