# SPDX-License-Identifier: Apache-2.0
# libzqengine.so exports what its headers declare and nothing else: the operations and its C interface. So does a program that has the
# engine in itself export the operations.
#     cmake -DENGINE=libzqengine.so -DPROGRAM=file or empty -DSOURCE=source directory -DNM=nm -P engine_symbols_test.cmake
function(exports_of file list)
  execute_process(COMMAND ${NM} -D -P --defined-only ${file} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]+" lines "${output}")
  list(TRANSFORM lines REPLACE " .*" "")
  list(SORT lines)
  set(${list} ${lines} PARENT_SCOPE)
endfunction()

file(GLOB headers ${SOURCE}/engine/*.h ${SOURCE}/embedded/zqengine.h)
foreach(header ${headers})
  file(READ ${header} text)
  string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
  string(REPLACE ";" "$" text "${text}") # which would divide a list
  string(REGEX MATCHALL "[a-z][a-z0-9_]*(\\([^(){}$]*\\))?( __attribute__\\(\\(weak\\)\\))?\\$" declarations "${text}")
  foreach(declaration ${declarations})
    # Members of records have neither.
    if(declaration MATCHES "\\(")
      string(REGEX MATCH "^[a-z0-9_]+" name ${declaration})
      list(APPEND declared ${name})
    endif()
  endforeach()
endforeach()
list(SORT declared)

exports_of(${ENGINE} exported)
if(NOT exported STREQUAL declared)
  set(missing ${declared})
  list(REMOVE_ITEM missing ${exported})
  list(REMOVE_ITEM exported ${declared})
  message(SEND_ERROR "declared and not exported: ${missing}; exported and not declared: ${exported}")
endif()
if(PROGRAM)
  exports_of(${PROGRAM} exported)
  list(REMOVE_ITEM declared ${exported})
  if(declared)
    message(SEND_ERROR "the program does not export: ${declared}")
  endif()
endif()
