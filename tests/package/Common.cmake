# Helpers shared by the packaging test scripts.
cmake_minimum_required(VERSION 3.25)

# Runs a command; stops the script with its output if it fails.
function(strand_run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Failed (${result}): ${ARGN}\n${out}\n${err}")
  endif()
  message(STATUS "${ARGN}\n${out}")
endfunction()

# Writes to <out_file> the C++ code of the README example marked by the line
# "<!-- example: <name> -->": the first ```cpp block after the marker.
function(strand_readme_example readme name out_file)
  file(READ ${readme} text)
  string(FIND "${text}" "<!-- example: ${name} -->" marker)
  if(marker EQUAL -1)
    message(FATAL_ERROR "${readme} has no example marked \"${name}\"")
  endif()
  string(SUBSTRING "${text}" ${marker} -1 text)
  if(NOT text MATCHES "```cpp\n(.*)")
    message(FATAL_ERROR "${readme}: no ```cpp block after the example \"${name}\"")
  endif()
  set(text "${CMAKE_MATCH_1}")
  string(FIND "${text}" "```" block_end)
  string(SUBSTRING "${text}" 0 ${block_end} code)
  file(WRITE ${out_file} "${code}")
endfunction()

# Configures the CMake project in <source> in the fresh build directory
# <binary> with this build's compiler and flags (plus the extra arguments),
# builds it and runs <binary>/<program>.
function(strand_build_and_run source binary program)
  file(REMOVE_RECURSE ${binary})
  strand_run(${CMAKE_COMMAND} -S ${source} -B ${binary} -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}"
    ${ARGN})
  strand_run(${CMAKE_COMMAND} --build ${binary} --target ${program})
  strand_run(${binary}/${program})
endfunction()

# Sets <out> to the files of the installed tree in PREFIX that match
# <pattern> under the library directory (lib/ or lib/<arch>/); stops the
# script unless there are exactly <count> of them.
function(strand_installed_files out pattern count)
  file(GLOB files ${PREFIX}/*/${pattern} ${PREFIX}/*/*/${pattern})
  list(LENGTH files found)
  if(NOT found EQUAL count)
    message(FATAL_ERROR "Expected ${count} files ${pattern} in ${PREFIX}, found: ${files}")
  endif()
  set(${out} ${files} PARENT_SCOPE)
endfunction()
