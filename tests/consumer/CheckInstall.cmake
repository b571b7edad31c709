# Installs the build in BUILD_DIR into a fresh prefix, then configures and
# builds the consumer project in CONSUMER_SOURCE against it, and runs it unless
# CONSUMER_RUNS is false (a build for another machine). With TOOLCHAIN_FILE the
# consumer is built with that toolchain; for macOS the installed framework must
# then carry an @rpath install name and the consumer must load it through one.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

include(${CMAKE_CURRENT_LIST_DIR}/../package/Common.cmake)

strand_run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
if(TOOLCHAIN_FILE)
  set(compiler_args -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
else()
  set(compiler_args -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
endif()
strand_run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${WORK_DIR}/build -G ${GENERATOR}
    ${compiler_args} -DCMAKE_PREFIX_PATH=${prefix}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
strand_run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)

file(GLOB framework LIST_DIRECTORIES true ${prefix}/lib*/Strand.framework)
if(framework)
  find_program(OTOOL NAMES llvm-otool-14 llvm-otool otool REQUIRED)
  foreach(file IN ITEMS ${framework}/Headers/Strand.h ${framework}/Versions/A/Strand)
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "The installed framework lacks ${file}")
    endif()
  endforeach()
  execute_process(COMMAND ${OTOOL} -D ${framework}/Strand OUTPUT_VARIABLE id)
  if(NOT id MATCHES "\n@rpath/Strand.framework/Versions/A/Strand\n")
    message(FATAL_ERROR "The installed framework's install name is not @rpath-relative:\n${id}")
  endif()
  execute_process(COMMAND ${OTOOL} -l -L ${WORK_DIR}/build/consumer OUTPUT_VARIABLE loads)
  if(NOT loads MATCHES "@rpath/Strand.framework/Versions/A/Strand" OR NOT loads MATCHES "LC_RPATH")
    message(FATAL_ERROR "The consumer does not load Strand.framework through an rpath:\n${loads}")
  endif()
  message(STATUS "The consumer loads ${id}")
endif()

if(CONSUMER_RUNS)
  strand_run(${WORK_DIR}/build/consumer)
endif()
