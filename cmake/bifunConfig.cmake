include(${CMAKE_CURRENT_LIST_DIR}/bifunTargets.cmake)
