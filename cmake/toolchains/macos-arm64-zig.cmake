# Cross-compiles for macOS on 64-bit Arm from Linux with the clang that Zig
# 0.11.0 bundles: it carries the macOS SDK headers, a libSystem stub and
# libc++, and links Mach-O. Fetch the toolchain first:
#
#   tools/fetch-zig-toolchain.sh
#
# STRAND_ZIG (cache variable or environment) names the zig executable; it
# defaults to where that script unpacks it. Archives are made with the host's
# llvm-ar-14 / llvm-ranlib-14.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)
set(CMAKE_SYSTEM_VERSION 20.0)

if(NOT STRAND_ZIG)
  if(DEFINED ENV{STRAND_ZIG})
    set(STRAND_ZIG "$ENV{STRAND_ZIG}")
  else()
    if(DEFINED ENV{STRAND_TOOLCHAIN_CACHE})
      set(_strand_cache "$ENV{STRAND_TOOLCHAIN_CACHE}")
    elseif(DEFINED ENV{XDG_CACHE_HOME})
      set(_strand_cache "$ENV{XDG_CACHE_HOME}/strand-toolchains")
    else()
      set(_strand_cache "$ENV{HOME}/.cache/strand-toolchains")
    endif()
    set(STRAND_ZIG "${_strand_cache}/zig-linux-x64-0.11.0/package/zig")
  endif()
endif()
if(NOT EXISTS "${STRAND_ZIG}")
  message(FATAL_ERROR "No zig at ${STRAND_ZIG}: run tools/fetch-zig-toolchain.sh first")
endif()
set(STRAND_ZIG "${STRAND_ZIG}" CACHE FILEPATH "zig 0.11.0 executable")
# try_compile projects see the same toolchain.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES STRAND_ZIG)

# CMake wants one executable per compiler, so `zig cc -target ...` gets a small
# wrapper beside the toolchain (outside any build tree, shared by all of them).
# It drops -Wl,-v, which CMake passes while probing the compiler and Zig's
# linker refuses.
get_filename_component(_strand_zig_dir "${STRAND_ZIG}" DIRECTORY)
set(_strand_wrappers "${_strand_zig_dir}/strand-aarch64-macos")
foreach(_strand_tool cc c++)
  file(CONFIGURE OUTPUT "${_strand_wrappers}/${_strand_tool}.in" CONTENT
"#!/bin/bash
args=()
for arg in \"$@\"; do
  [[ \"$arg\" == -Wl,-v ]] || args+=(\"$arg\")
done
exec \"${STRAND_ZIG}\" ${_strand_tool} -target aarch64-macos \"\${args[@]}\"
" @ONLY)
  file(COPY_FILE "${_strand_wrappers}/${_strand_tool}.in" "${_strand_wrappers}/${_strand_tool}"
    ONLY_IF_DIFFERENT)
  file(CHMOD "${_strand_wrappers}/${_strand_tool}"
    PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()
set(CMAKE_C_COMPILER "${_strand_wrappers}/cc")
set(CMAKE_CXX_COMPILER "${_strand_wrappers}/c++")

find_program(CMAKE_AR NAMES llvm-ar-14 llvm-ar REQUIRED)
find_program(CMAKE_RANLIB NAMES llvm-ranlib-14 llvm-ranlib REQUIRED)
find_program(CMAKE_INSTALL_NAME_TOOL NAMES llvm-install-name-tool-14 llvm-install-name-tool REQUIRED)

set(CMAKE_USER_MAKE_RULES_OVERRIDE "${CMAKE_CURRENT_LIST_DIR}/macos-arm64-rules.cmake")

# The SDK lives inside the toolchain; nothing on the host is a macOS sysroot.
set(CMAKE_OSX_SYSROOT "" CACHE PATH "")
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
