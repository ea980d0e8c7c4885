set(stats_sources
  StatsBlock.cpp
  StatsBlockManager.cpp
  StatsBlockValues.cpp
  StatsLibrary.cpp)
