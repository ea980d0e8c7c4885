set(timers_sources
  ChildTimer.cpp
  Timer.cpp
  TimerManager.cpp)
