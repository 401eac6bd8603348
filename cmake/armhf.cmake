# Toolchain file: Debian's cross compiler for 32-bit ARM, everything else from one sysroot (scripts/armhf-sysroot),
# and programs started through QEMU's user emulation. For a board of your own see docs/porting.md.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)

set(TORNEL_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot/root CACHE PATH "What the board's programs see as /")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TORNEL_SYSROOT)
cmake_path(ABSOLUTE_PATH TORNEL_SYSROOT NORMALIZE OUTPUT_VARIABLE CMAKE_SYSROOT)
set(triplet arm-linux-gnueabihf)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
set(CMAKE_CXX_COMPILER ${triplet}-g++)

# The compiler's package has a C and a C++ library of its own, which it looks through before the sysroot. Headers,
# start files and libraries are those of the sysroot, which the programs run with, and of nothing else.
execute_process(COMMAND ${triplet}-g++ -dumpversion
  OUTPUT_VARIABLE gcc_version OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "^[0-9]+" gcc_version ${gcc_version})
set(gcc ${CMAKE_SYSROOT}/usr/lib/gcc/${triplet}/${gcc_version})
string(JOIN " " CMAKE_CXX_FLAGS_INIT
  -nostdinc
  -isystem ${CMAKE_SYSROOT}/usr/include/c++/${gcc_version}
  -isystem ${CMAKE_SYSROOT}/usr/include/${triplet}/c++/${gcc_version}
  -isystem ${CMAKE_SYSROOT}/usr/include/c++/${gcc_version}/backward
  -isystem ${gcc}/include
  -isystem ${CMAKE_SYSROOT}/usr/include/${triplet}
  -isystem ${CMAKE_SYSROOT}/usr/include)
string(JOIN " " CMAKE_EXE_LINKER_FLAGS_INIT
  -B${gcc} -B${CMAKE_SYSROOT}/usr/lib/${triplet} -L${gcc}
  -L${CMAKE_SYSROOT}/lib/${triplet} -L${CMAKE_SYSROOT}/usr/lib/${triplet})

set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
