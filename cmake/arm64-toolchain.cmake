# SPDX-License-Identifier: Apache-2.0
# Debian's cross compiler for arm64, with the libraries that tools/check-arm64 unpacks under build/. What is built runs in an emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
cmake_path(SET CMAKE_SYSROOT NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
# The least processor, which is the one that the code is for; extensions of later ones, which the C library would use, are slow to emulate.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -cpu cortex-a53 -L ${CMAKE_SYSROOT})
