# 32-bit ARM with hardware floating point: Debian's cross compiler and, for libraries, the packages that
# scripts/fetch-armhf has unpacked.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)  # says that compilers before 7.1 passed some arguments in another way

set(VELLORAN_ARMHF_PACKAGES ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-packages
    CACHE PATH "Where scripts/fetch-armhf has unpacked the packages")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELLORAN_ARMHF_PACKAGES)
get_filename_component(packages ${VELLORAN_ARMHF_PACKAGES} ABSOLUTE)
if(NOT EXISTS ${packages}/fetched)
  message(FATAL_ERROR "expected the packages for ARM in ${packages}, found none: run scripts/fetch-armhf")
endif()

# What is found is theirs, never this machine's.
set(CMAKE_FIND_ROOT_PATH ${packages})
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${packages}/usr/include/${CMAKE_LIBRARY_ARCHITECTURE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${packages})
set(ENV{PKG_CONFIG_LIBDIR} ${packages}/usr/lib/arm-linux-gnueabihf/pkgconfig)

# Programs of this target run here by emulation, as root of a user namespace, which an emulated program cannot make for
# itself. The C and C++ libraries are the cross compiler's.
set(CMAKE_CROSSCOMPILING_EMULATOR unshare --user --map-root-user qemu-arm -L /usr/arm-linux-gnueabihf)
