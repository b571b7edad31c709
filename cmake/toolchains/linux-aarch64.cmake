# Cross-compiles for Linux on 64-bit Arm (aarch64) with Debian's cross toolchain,
# and runs the test programs under user-mode emulation:
#
#   apt-get install gcc-aarch64-linux-gnu g++-aarch64-linux-gnu \
#     libc6-dev-arm64-cross qemu-user-static
#
# The programs run through qemu-aarch64-static with the target's libraries
# (-L), so no binfmt registration is needed. nm, objcopy, ar and ranlib are the
# target's (CMAKE_NM, CMAKE_OBJCOPY, ...), found beside the compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(STRAND_CROSS_TRIPLE aarch64-linux-gnu)
set(STRAND_CROSS_SYSROOT /usr/${STRAND_CROSS_TRIPLE})
set(CMAKE_C_COMPILER ${STRAND_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${STRAND_CROSS_TRIPLE}-g++)

# Libraries and headers come from the target's tree only, programs from the
# host. Packages are looked for in the target's tree first, then where
# CMAKE_PREFIX_PATH points on the host (an install of a cross build, such as
# the one the install test makes).
set(CMAKE_FIND_ROOT_PATH ${STRAND_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

find_program(STRAND_QEMU_AARCH64 qemu-aarch64-static)
if(NOT STRAND_QEMU_AARCH64)
  message(FATAL_ERROR "qemu-aarch64-static not found: install qemu-user-static")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR ${STRAND_QEMU_AARCH64} -L ${STRAND_CROSS_SYSROOT})
