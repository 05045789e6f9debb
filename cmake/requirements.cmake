# SPDX-License-Identifier: Apache-2.0
# bifun_require(VARIABLES NAME PACKAGE [ELSE]): ends the configuration unless all of the variables are true, and says which of Debian's
# packages has what is missing, or what else to do.
macro(bifun_require variables name package)
  foreach(variable ${variables})
    if(NOT ${variable})
      message(FATAL_ERROR "${name} was not found (${variable}). Install it (on Debian: apt install ${package})${ARGN}.")
    endif()
  endforeach()
endmacro()
