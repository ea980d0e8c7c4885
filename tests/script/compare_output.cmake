# Runs a program and compares what it prints with a file.
#   cmake -DPROGRAM=... -DARGUMENTS="a;b" -DWORK_DIR=... -DEXPECTED=FILE -P compare_output.cmake
execute_process(COMMAND ${PROGRAM} ${ARGUMENTS} WORKING_DIRECTORY ${WORK_DIR}
  OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
  message(FATAL_ERROR "exit code ${result}\n--- expected\n${expected}--- printed\n${output}--- errors\n${error}")
endif()
