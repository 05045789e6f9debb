# SPDX-License-Identifier: Apache-2.0
# cmake --install: the library, the embedded engine, the program if it is built, the headers in their source layout under include/bifun, a
# CMake package, pkg-config files, the manual and the pages. Each component is what one package has of it.
include(CMakePackageConfigHelpers)
set(docs ${PROJECT_SOURCE_DIR}/docs)

install(TARGETS bifun EXPORT bifunTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS zqengine EXPORT bifunTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT engine NAMELINK_COMPONENT development)

function(install_headers folder)
  install(FILES ${ARGN} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun/${folder} COMPONENT development)
endfunction()
install_headers(bop bop/bifun.h bop/exports.def)
foreach(family frame conditional numeric bifun_str bifun_date json)
  install_headers(bop/${family} bop/${family}/exports.def)
endforeach()
install_headers(bop/json bop/json/returned_types.h) # which its exports.def includes
install_headers(bop/frame bop/frame/contract.h bop/frame/status.h bop/frame/statuses.def bop/frame/value_type.h bop/frame/value_types.def
  bop/frame/keywords.h bop/frame/facts.h bop/frame/catalogue.h)
install(DIRECTORY engine layouts DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun COMPONENT development FILES_MATCHING PATTERN "*.h")
install_headers(embedded embedded/zqengine.h)

# The headers of values and of the catalogue are C++; those of operations and entry points C11, too.
target_compile_features(bifun INTERFACE cxx_std_20)
target_compile_features(zqengine INTERFACE cxx_std_20)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/bifun)
install(EXPORT bifunTargets NAMESPACE bifun:: DESTINATION ${package_dir} COMPONENT development)
# Below 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/bifunConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/bifunConfig.cmake ${PROJECT_BINARY_DIR}/bifunConfigVersion.cmake DESTINATION ${package_dir} COMPONENT development)

# Relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH prefix_from_package /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(package bifun zqengine)
  configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# The pages of the functions are for whoever writes SQL, the rest for builders of engines. All lie as they do
# here, for they refer to each other.
set(pages_of_functions functions strings dates json number-formats date-formats)
list(TRANSFORM pages_of_functions PREPEND ${docs}/)
list(TRANSFORM pages_of_functions APPEND .md)
file(GLOB pages_of_development CONFIGURE_DEPENDS ${docs}/*.md ${docs}/*.svg)
list(REMOVE_ITEM pages_of_development ${pages_of_functions} ${docs}/duckdb.md ${docs}/postgresql.md)
install(FILES ${pages_of_development} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT development)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(FILES bench/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/bench COMPONENT development)
if(BIFUN_DUCKDB)
  install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/duckdb DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT duckdb
    FILES_MATCHING PATTERN "*.duckdb_extension")
  install(FILES ${docs}/duckdb.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT duckdb)
endif()
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
if(BIFUN_PROGRAM)
  install(TARGETS bifun_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  install(FILES ${pages_of_functions} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT program)
  install(FILES host/completions/bifun DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES host/completions/_bifun DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)
  install(FILES host/completions/bifun.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
  install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
  install(DIRECTORY data DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program FILES_MATCHING PATTERN "*.csv" PATTERN "*.md")
  install(FILES ${docs}/bifun.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT manual)
else()
  install(FILES ${pages_of_functions} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT development)
endif()
