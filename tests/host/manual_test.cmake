# SPDX-License-Identifier: Apache-2.0
# Holds the manual page against what the program says of itself: each has the options and settings of the other.
#     cmake -DPROGRAM=bifun -DMANUAL=bifun.1 -P manual_test.cmake
execute_process(COMMAND ${PROGRAM} --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${PROGRAM} functions --help OUTPUT_VARIABLE functions_help COMMAND_ERROR_IS_FATAL ANY)
file(READ ${MANUAL} manual)
string(REPLACE "\\-" "-" manual "${manual}")
string(APPEND help "${functions_help}")

foreach(text help manual)
  string(REGEX MATCHALL "--[a-z][a-z-]*" options_of_${text} "${${text}}")
  string(REGEX MATCHALL "[a-z]+_(mode|zone|format|language|sensitive|date)|charset=|param[.][0-9]+" settings "${${text}}")
  list(APPEND options_of_${text} ${settings})
  list(REMOVE_DUPLICATES options_of_${text})
  list(SORT options_of_${text})
endforeach()
if(NOT options_of_help STREQUAL options_of_manual)
  message(FATAL_ERROR "bifun --help has ${options_of_help}\n${MANUAL} has ${options_of_manual}")
endif()
