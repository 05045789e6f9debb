# SPDX-License-Identifier: Apache-2.0
# Debian packages, by cpack in the build folder; tools/make-packages builds as Debian does first, and checks the result. Each package is
# made of a component of what is installed, and of one with what Debian alone wants.
find_program(DPKG_DEB_PROGRAM dpkg-deb)
find_program(GZIP_PROGRAM gzip)
if(NOT DPKG_DEB_PROGRAM OR NOT GZIP_PROGRAM OR CMAKE_CROSSCOMPILING) # cpack takes the machine that it runs on for that of the packages
  return()
endif()

set(BIFUN_MAINTAINER "bifun developers <developers@bifun.invalid>" CACHE STRING "Maintainer of the Debian packages: name <address>")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME bifun)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0bifun1) # Debian's own would be newer
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${BIFUN_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(debian ${PROJECT_BINARY_DIR}/debian)
set(debian_sources ${PROJECT_SOURCE_DIR}/cmake/debian)
set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
string(TIMESTAMP debian_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH, where it is set
configure_file(${debian_sources}/changelog.in ${debian}/changelog.Debian @ONLY)
function(compress source target)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${source} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
compress(${debian}/changelog.Debian ${debian}/changelog.Debian.gz)
compress(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${debian}/changelog.gz)
compress(${PROJECT_SOURCE_DIR}/docs/bifun.1 ${debian}/bifun.1.gz)

# debian_package(COMPONENT NAME SECTION DEPENDENCIES SUMMARY LINE...): the lines describe it behind what all descriptions begin
# with.
macro(debian_package component name section dependencies summary)
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component} ${component}_of_debian)
  set(CPACK_COMPONENT_${upper}_GROUP ${component}_package)
  set(CPACK_COMPONENT_${upper}_OF_DEBIAN_GROUP ${component}_package)
  set(package CPACK_DEBIAN_${upper}_PACKAGE)
  set(${package}_PACKAGE_NAME ${name})
  set(${package}_PACKAGE_SECTION ${section})
  set(${package}_PACKAGE_DEPENDS "${dependencies}")
  string(JOIN "\n" ${package}_DESCRIPTION ${summary}
    "bifun is a library of the functions that SQL has built in, such as NVL, ROUND,"
    "SUBSTR and DATEADD. A database engine finds them by name and calls them for"
    "whole batches of rows." "" ${ARGN})
  set(files_of_debian ${debian_sources}/copyright ${debian}/changelog.gz ${debian}/changelog.Debian.gz)
  install(FILES ${files_of_debian} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component}_of_debian EXCLUDE_FROM_ALL)
  if(EXISTS ${debian_sources}/${name}.lintian-overrides)
    install(FILES ${debian_sources}/${name}.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${name}
      COMPONENT ${component}_of_debian EXCLUDE_FROM_ALL)
  endif()
  if(${section} STREQUAL libs)
    # The linker's cache is renewed by its trigger. cpack would add scripts that renew it once more unless such are named; as these do not
    # exist, it warns and leaves them out.
    set(${package}_PACKAGE_CONTROL_EXTRA ${debian_sources}/triggers ${debian_sources}/postinst ${debian_sources}/postrm)
  endif()
endmacro()

debian_package(library libbifun${PROJECT_VERSION_MAJOR} libs "" "SQL built-in functions over batches of rows"
  "This package has the library. The engine that loads it supplies operations for"
  "storage, strings, decimals and dates. It may take those of libzqengine${PROJECT_VERSION_MAJOR}.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_PACKAGE_SUGGESTS libzqengine${PROJECT_VERSION_MAJOR})
debian_package(engine libzqengine${PROJECT_VERSION_MAJOR} libs "" "embedded engine for SQL built-in functions"
  "This package has the embedded engine: the operations on storage, strings,"
  "decimals and dates that the functions ask of an engine.")
debian_package(development libbifun-dev libdevel
  "libbifun${PROJECT_VERSION_MAJOR} (= ${debian_version}), libzqengine${PROJECT_VERSION_MAJOR} (= ${debian_version})"
  "SQL built-in functions over batches of rows - development files"
  "This package has the headers of the library and of the embedded engine, their"
  "CMake package, pkg-config files, and examples and pages for builders of"
  "engines.")
if(BIFUN_PROGRAM)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS bifun)
  debian_package(program bifun database "libbifun${PROJECT_VERSION_MAJOR} (= ${debian_version})"
    "SQL over CSV files"
    "This package has a program that runs SQL queries with these functions over"
    "CSV files, and the pages that describe the functions.")
  install(FILES ${debian}/bifun.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program_of_debian EXCLUDE_FROM_ALL)
endif()
if(BIFUN_POSTGRESQL AND CMAKE_INSTALL_PREFIX STREQUAL "/usr") # else PostgreSQL's folders are no part of what is staged
  debian_package(postgresql postgresql-15-bifun database
    "postgresql-15, libbifun${PROJECT_VERSION_MAJOR} (= ${debian_version}), libzqengine${PROJECT_VERSION_MAJOR} (= ${debian_version})"
    "SQL built-in functions for PostgreSQL 15"
    "This package has an extension of PostgreSQL 15 with these functions.")
endif()
if(BIFUN_DUCKDB)
  debian_package(duckdb bifun-duckdb database
    "libbifun${PROJECT_VERSION_MAJOR} (= ${debian_version}), libzqengine${PROJECT_VERSION_MAJOR} (= ${debian_version})"
    "SQL built-in functions as an extension of DuckDB"
    "This package has a loadable extension with these functions for every DuckDB"
    "from 1.2 on, and the page that describes it.")
endif()
include(CPack)
