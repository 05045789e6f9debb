# SPDX-License-Identifier: Apache-2.0
# Makes an extension of DuckDB out of FILE: behind it stand eight fields of 32 bytes, the last one first, and 256 bytes in which a
# signature would be. cmake writes no bytes of zero; printf does.
set(fields "" "" "" "C_STRUCT" ${VERSION} ${INTERFACE_VERSION} ${PLATFORM} "4")
set(octets "")
foreach(field IN LISTS fields)
  string(LENGTH "${field}" length)
  math(EXPR padding "32 - ${length}")
  string(REPEAT "\\000" ${padding} zeros)
  string(APPEND octets "${field}${zeros}")
endforeach()
string(REPEAT "\\000" 256 signature)
configure_file(${FILE} ${MADE} COPYONLY)
execute_process(COMMAND sh -c "printf '${octets}${signature}' >> '${MADE}'" COMMAND_ERROR_IS_FATAL ANY)
