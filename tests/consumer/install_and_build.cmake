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
run(${WORK_DIR}/prefix/bin/mosaicer -help)
run(${WORK_DIR}/prefix/bin/kst --help)
