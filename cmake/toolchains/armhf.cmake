# SPDX-License-Identifier: Apache-2.0
# 32-bit ARM, hard float: Debian's cross compiler, the sysroot that scripts/armhf-sysroot makes, and qemu to run the
# tests. Another sysroot: -DZELDB_ARMHF_SYSROOT=DIRECTORY, or the environment variable of that name.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

if(NOT ZELDB_ARMHF_SYSROOT)
  cmake_path(SET sysroot NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../../build/armhf-sysroot")
  if(DEFINED ENV{ZELDB_ARMHF_SYSROOT})
    set(sysroot $ENV{ZELDB_ARMHF_SYSROOT})
  endif()
  if(NOT IS_DIRECTORY ${sysroot})
    message(FATAL_ERROR "No sysroot in ${sysroot}: run scripts/armhf-sysroot first")
  endif()
  set(ZELDB_ARMHF_SYSROOT ${sysroot} CACHE PATH "Root of the armhf libraries")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZELDB_ARMHF_SYSROOT)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# GCC 7 changed how some structures are passed, and says so at every call of a template that it concerns.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(CMAKE_SYSROOT ${ZELDB_ARMHF_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
