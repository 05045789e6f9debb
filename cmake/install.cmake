# cmake --install: the library, the embedded engine, the program, the headers in their source layout under include/bifun, a CMake
# package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS bifun zqengine EXPORT bifunTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES bop/bifun.h bop/exports.def DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun/bop)
foreach(family frame conditional numeric bifun_str bifun_date)
  install(FILES bop/${family}/exports.def DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun/bop/${family})
endforeach()
install(FILES bop/frame/contract.h bop/frame/status.h bop/frame/statuses.def bop/frame/value_type.h bop/frame/value_types.def
    bop/frame/keywords.h
    bop/frame/facts.h bop/frame/catalogue.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun/bop/frame)
install(DIRECTORY engine layouts DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun FILES_MATCHING PATTERN "*.h")
install(FILES embedded/zqengine.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/bifun/embedded)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/bifun)
install(EXPORT bifunTargets NAMESPACE bifun:: DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/bifunConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/bifunConfig.cmake ${PROJECT_BINARY_DIR}/bifunConfigVersion.cmake DESTINATION ${package_dir})
# Relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH prefix_from_package /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/bifun.pc.in ${PROJECT_BINARY_DIR}/bifun.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/bifun.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
