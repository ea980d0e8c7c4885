# Installs the build tree BUILD_DIR into WORK_DIR, builds the consumer project against it, and runs it and the programs.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGN} ended with ${code}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK_DIR}/build -G Ninja -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix
  -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer)

# The atlases are part of the project's build, whatever builds it, and are made anew when their textures change.
function(expect_atlas build)
  if(NOT EXISTS ${build}/out/ui/atlas.dds)
    message(FATAL_ERROR "no atlas in ${build}")
  endif()
endfunction()
expect_atlas(${WORK_DIR}/build)
file(REMOVE ${WORK_DIR}/build/out/ui/atlas.dds)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
expect_atlas(${WORK_DIR}/build)
find_program(MAKE make)
if(MAKE)
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK_DIR}/make -G "Unix Makefiles"
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/make --target atlases)
  expect_atlas(${WORK_DIR}/make)
endif()

# The snippet of the documentation, in the example folder.
set(source_dir ${CMAKE_CURRENT_LIST_DIR}/../..)
file(COPY ${source_dir}/examples/ DESTINATION ${WORK_DIR}/snippet)
file(READ ${source_dir}/docs/integration.md page)
string(REGEX MATCH "```cmake\n([^`]*)```" block "${page}")
file(WRITE ${WORK_DIR}/snippet/CMakeLists.txt
  "cmake_minimum_required(VERSION 3.25)\nproject(snippet LANGUAGES CXX)\n${CMAKE_MATCH_1}")
run(${CMAKE_COMMAND} -S ${WORK_DIR}/snippet -B ${WORK_DIR}/snippet/build -G Ninja
  -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/snippet/build)
if(NOT EXISTS ${WORK_DIR}/snippet/build/out/example/ui/hud/atlas.dds)
  message(FATAL_ERROR "the snippet of docs/integration.md makes no atlas")
endif()

run(${WORK_DIR}/prefix/bin/mosaicer -help)
run(${WORK_DIR}/prefix/bin/kst --help)
