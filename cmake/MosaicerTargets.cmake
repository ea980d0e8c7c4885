# The one place that says how a room, a test, a benchmark and a fuzz target are built.

function(mosaicer_compile_settings target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  # No contraction: the same input gives the same bytes on every compiler and machine.
  target_compile_options(${target} PRIVATE -ffp-contract=off)
  if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
      -Woverloaded-virtual -Wcast-align $<$<CXX_COMPILER_ID:GNU>:-Wdouble-promotion> -Wformat=2
      -Wimplicit-fallthrough -Wundef
      # Clang takes `const double x = a_float` for a promotion by mistake, too.
      # GCC 12 sees overlaps in plain std::string concatenations, hence -Wno-restrict.
      $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wno-restrict>)
    if(MOSAICER_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
  if(MOSAICER_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${MOSAICER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${MOSAICER_SANITIZE})
  endif()
  if(MOSAICER_BUILD_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# A room: a static library with an alias (mosaicer::packing for mosaicer_packing, kst::utility for kst_utility).
#   mosaicer_add_room(mosaicer_packing SOURCES a.cpp b.cpp LINK mosaicer::records)
function(mosaicer_add_room target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LINK_PRIVATE" ${ARGN})
  add_library(${target} STATIC ${ARG_SOURCES})
  string(REGEX REPLACE "^(mosaicer|kst)_" "\\1::" alias ${target})
  add_library(${alias} ALIAS ${target})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${mosaicer_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/mosaicer>)
  target_link_libraries(${target} PUBLIC ${ARG_LINK} PRIVATE ${ARG_LINK_PRIVATE})
  mosaicer_compile_settings(${target})
  string(REGEX REPLACE "^.*::" "" export_name ${alias})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${export_name} POSITION_INDEPENDENT_CODE ON)
  set_property(GLOBAL APPEND PROPERTY MOSAICER_ROOMS ${target})
endfunction()

# For programs whose sources each include more of libraries than they say themselves: a few of them are compiled as one.
# Names in their anonymous namespaces must differ; those of the rooms too, which presets for checks build like this.
function(mosaicer_compile_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
  if(MOSAICER_SANITIZE)
    # What takes the compiler longest and finds least in what is mostly libraries' code; the rooms keep it.
    target_compile_options(${target} PRIVATE -fno-sanitize=vptr,null,alignment)
  endif()
endfunction()

# One test program a room; ctest runs it as one test.
#   mosaicer_add_tests(packing ORACLES SOURCES AtlasSurfaceTest.cpp LINK mosaicer::packing)
# The optimiser takes longer than tests that run once win back. ORACLES keeps it, for those that hold literal algorithms
# against the rooms' own on much input.
function(mosaicer_add_tests room)
  cmake_parse_arguments(ARG "ORACLES" "" "SOURCES;LINK" ${ARGN})
  set(target mosaicer_tests_${room})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE ${ARG_LINK} GTest::gmock GTest::gtest_main)
  mosaicer_compile_settings(${target})
  mosaicer_compile_together(${target})
  if(MOSAICER_SANITIZE AND NOT ARG_ORACLES)
    target_compile_options(${target} PRIVATE -O0)
  elseif(NOT ARG_ORACLES)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
  target_compile_definitions(${target} PRIVATE
    MOSAICER_TEST_DATA="${mosaicer_SOURCE_DIR}/tests/data" MOSAICER_SOURCE_DIR="${mosaicer_SOURCE_DIR}")
  add_test(NAME ${room} COMMAND ${target})
endfunction()

#   mosaicer_add_bench(packing SOURCES InsertionBench.cpp LINK mosaicer::packing)
function(mosaicer_add_bench room)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  set(target bench_${room})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE ${ARG_LINK} benchmark::benchmark benchmark::benchmark_main)
  mosaicer_compile_settings(${target})
  target_compile_definitions(${target} PRIVATE MOSAICER_SOURCE_DIR="${mosaicer_SOURCE_DIR}")
endfunction()

# A fuzz target: fuzz/NAME.cpp with seeds in fuzz/seeds/NAME. With MOSAICER_BUILD_FUZZ it is a libFuzzer program;
# otherwise a plain main replays the seeds (and their prefixes and flips) as a test, so that the target never rots.
#   mosaicer_add_fuzz_target(dds_reader LINK mosaicer::compression)
function(mosaicer_add_fuzz_target name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  set(target fuzz_${name})
  if(MOSAICER_BUILD_FUZZ)
    add_executable(${target} ${name}.cpp)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  else()
    if(NOT TARGET fuzz_replay)
      add_library(fuzz_replay STATIC replay_main.cpp)
      mosaicer_compile_settings(fuzz_replay)
    endif()
    add_executable(${target} ${name}.cpp)
    target_link_libraries(${target} PRIVATE fuzz_replay)
    add_test(NAME fuzz_replay_${name} COMMAND ${target} ${mosaicer_SOURCE_DIR}/fuzz/seeds/${name})
  endif()
  target_link_libraries(${target} PRIVATE ${ARG_LINK})
  mosaicer_compile_settings(${target})
endfunction()
