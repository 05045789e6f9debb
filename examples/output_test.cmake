# SPDX-License-Identifier: Apache-2.0
# Runs an example; what it prints has to be what the file has.
#     cmake -DCOMMAND=program;arguments -DEXPECTED=file -P output_test.cmake
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE output RESULT_VARIABLE failed)
file(READ ${EXPECTED} expected)
if(failed OR NOT output STREQUAL expected)
  message(FATAL_ERROR "exit status ${failed}, and printed:\n${output}\nexpected:\n${expected}")
endif()
