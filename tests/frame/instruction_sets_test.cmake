# SPDX-License-Identifier: Apache-2.0
# The objects of the families that are compiled for more than the baseline: whatever the linker may share with other objects lies in their
# own namespace, or a function for a newer processor could stand for all.
#     cmake -DOBJECTS=list -DNAMESPACE=bifun_v3 -DNM=nm -P instruction_sets_test.cmake
set(checked 0)
foreach(object ${OBJECTS})
  execute_process(COMMAND ${NM} -P --defined-only --extern-only ${object} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]+" symbols "${output}")
  foreach(symbol ${symbols})
    string(REGEX REPLACE " .*" "" symbol ${symbol})
    math(EXPR checked "${checked} + 1")
    string(LENGTH ${NAMESPACE} length)
    # Mangled: a name, or what belongs to one such as a type or a thunk, in the namespace.
    if(NOT symbol MATCHES "^_Z[A-Z]*${length}${NAMESPACE}" AND NOT symbol MATCHES "^(__odr_asan_gen_|DW\\.ref\\.)_?_?Z?N?K?${length}${NAMESPACE}")
      message(SEND_ERROR "${object} has ${symbol}")
    endif()
  endforeach()
endforeach()
if(checked EQUAL 0)
  message(SEND_ERROR "no symbols")
endif()
