# SPDX-License-Identifier: Apache-2.0
# Installs into a directory of its own and builds consumers against that, in C++ and C, by the CMake package and by pkg-config, and the
# examples; moves the directory before the latter. The foreign engine supplies its own operations.
#     cmake -DBUILD=build directory -DWORK=scratch directory -DSOURCES=this project -DCOMPILER=c++ -DC_COMPILER=cc -DPKG_CONFIG=pkg-config
#         -P install_test.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)
set(CONSUMER ${SOURCES}/tests/frame/consumer)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_C_COMPILER=${C_COMPILER}
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/consumer)
run(${WORK}/build/c_consumer)
run(${CMAKE_COMMAND} -S ${SOURCES}/examples -B ${WORK}/examples -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK}/examples)
run(${WORK}/examples/evaluate)

file(RENAME ${prefix} ${WORK}/moved)
file(GLOB package ${WORK}/moved/lib*/pkgconfig ${WORK}/moved/lib/*/pkgconfig)
cmake_path(GET package PARENT_PATH libraries)
set(ENV{PKG_CONFIG_PATH} ${package})
run(${PKG_CONFIG} --cflags --libs zqengine)
separate_arguments(zqengine UNIX_COMMAND "${output}")
run(${PKG_CONFIG} --cflags bifun)
separate_arguments(bifun UNIX_COMMAND "${output}")
set(run_path -Wl,-rpath,${libraries})
run(${COMPILER} -std=c++20 ${CONSUMER}/consumer.cpp -o ${WORK}/consumer ${zqengine} ${run_path})
run(${WORK}/consumer)
run(${C_COMPILER} -std=c11 -pedantic-errors ${CONSUMER}/c_consumer.c -o ${WORK}/c_consumer ${zqengine} ${run_path})
run(${WORK}/c_consumer)
run(${C_COMPILER} -std=c11 -rdynamic ${bifun} -I ${SOURCES} ${SOURCES}/tests/frame/foreign_engine.c -o ${WORK}/foreign_engine -ldl)
run(${WORK}/foreign_engine ${libraries}/libbifun.so.0)
