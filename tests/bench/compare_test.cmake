# SPDX-License-Identifier: Apache-2.0
# The comparison of builds, over a handful of cases: COMPARE the program, SCRIPT its front, LIBRARY, ALTERED another build.

function(run expected_status)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE status)
  if(NOT status EQUAL expected_status)
    message(SEND_ERROR "${ARGN}: status ${status}, expected ${expected_status}\n${output}${error}")
  endif()
  set(output "${output}${error}" PARENT_SCOPE)
endfunction()

function(expect)
  foreach(pattern IN LISTS ARGN)
    if(NOT output MATCHES "${pattern}")
      message(SEND_ERROR "not in the output: ${pattern}\n${output}")
    endif()
  endforeach()
endfunction()

set(handful --filter=^babs_a.*/no_nulls$ --seconds=0.1)

# The same library twice: the results are the same. The ratios are near 1 on any machine, though not how near.
run(0 ${COMPARE} ${LIBRARY} ${LIBRARY} ${handful})
expect("the same library\n" "babs_a_math_int/no_nulls +[0-9.]+ +[0-9.]+ +(0\\.[6-9]|1\\.[0-4])" "Results differ: 0\n"
  "3 cases, geometric mean of NEW / OLD (0\\.[89]|1\\.[01])")

run(1 ${COMPARE} ${LIBRARY} ${ALTERED} ${handful})
expect("Not in NEW: 1\nbabs_a_math_dec\n" "Faster, measured twice: 0\n" "Slower, measured twice: [12]\n.*babs_a_math_dbl/no_nulls"
  "Results differ: 1\nbabs_a_math_int/no_nulls: [0-9]+ and [0-9]+ in row 1023\n")
run(1 ${COMPARE} ${ALTERED} ${LIBRARY} ${handful})
expect("Not in OLD: 1\nbabs_a_math_dec\n" "Faster, measured twice: [12]\n.*babs_a_math_dbl/no_nulls" "Slower, measured twice: 0\n")

run(1 ${COMPARE} ${LIBRARY})
expect("two libraries are compared")
run(1 ${COMPARE} ${LIBRARY} ${LIBRARY} --filter=none_such)
expect("no case matches none_such")
run(1 ${COMPARE} ${LIBRARY} ${LIBRARY} --seconds=0)
expect("--seconds takes a positive number")
run(1 ${COMPARE} ${LIBRARY} ${LIBRARY} --rows_per_call=32769)
expect("--rows_per_call takes a number from 1 to 32768")
run(1 ${COMPARE} ${LIBRARY} ${CMAKE_CURRENT_LIST_FILE})
expect("bifun_compare: .*compare_test.cmake: ")

run(1 ${SCRIPT} ${LIBRARY})
expect("two builds are compared")
run(1 ${SCRIPT} ${LIBRARY} none-such)
expect("none-such is no library, no build folder .* and no git revision")
