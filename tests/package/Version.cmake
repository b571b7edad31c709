# The three places a client reads Strand's version agree with the project's
# version (EXPECTED): the CMake package (checked while compiling the client in
# SOURCE_DIR), <Strand/Version.h> (printed by that client) and pkg-config.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

set(binary ${WORK_DIR}/build)
strand_build_and_run(${SOURCE_DIR} ${binary} consumer -DCMAKE_PREFIX_PATH=${PREFIX})
execute_process(COMMAND ${binary}/consumer OUTPUT_VARIABLE header_version
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

find_program(PKG_CONFIG NAMES pkg-config pkgconf REQUIRED)
file(GLOB pc_dir LIST_DIRECTORIES true ${PREFIX}/*/pkgconfig ${PREFIX}/*/*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
unset(ENV{PKG_CONFIG_LIBDIR})
execute_process(COMMAND ${PKG_CONFIG} --modversion strand OUTPUT_VARIABLE pc_version
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

if(NOT header_version STREQUAL EXPECTED OR NOT pc_version STREQUAL EXPECTED)
  message(FATAL_ERROR "Versions differ: project ${EXPECTED}, <Strand/Version.h> "
    "${header_version}, pkg-config ${pc_version}")
endif()
message(STATUS "CMake package, <Strand/Version.h> and pkg-config all say ${EXPECTED}")
