# tools/strand-symbolize (SYMBOLIZE, run with PYTHON) on a real trace: the
# client in SOURCE_DIR, built against the installed PREFIX, prints the trace of
# its stuck worker; every frame must come out as one "#N function file:line"
# line, and the client's own frames, which the trace shows without a name,
# must be named with their lines in main.cpp.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

set(binary ${WORK_DIR}/build)
strand_build_and_run(${SOURCE_DIR} ${binary} client -DCMAKE_PREFIX_PATH=${PREFIX}
  -DCMAKE_BUILD_TYPE=RelWithDebInfo)
execute_process(COMMAND ${binary}/client OUTPUT_FILE ${WORK_DIR}/trace.txt COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${PYTHON} ${SYMBOLIZE} INPUT_FILE ${WORK_DIR}/trace.txt
  OUTPUT_VARIABLE symbolized ERROR_VARIABLE errors COMMAND_ERROR_IS_FATAL ANY)
file(READ ${WORK_DIR}/trace.txt trace)
message(STATUS "Trace:\n${trace}\nSymbolized:\n${symbolized}${errors}")
set(symbolized "\n${symbolized}")  # every frame line now follows a line break

# The lines of main.cpp marked "// trace: <mark>".
file(STRINGS ${SOURCE_DIR}/main.cpp source)
set(number 0)
foreach(line IN LISTS source)
  math(EXPR number "${number} + 1")
  if(line MATCHES "// trace: ([a-z]+)")
    set(line_${CMAKE_MATCH_1} ${number})
  endif()
endforeach()

string(REGEX MATCHALL "\\[0x[0-9a-f]+\\]\n" frames "${trace}")
string(REGEX MATCHALL "\n#[0-9]+ " numbered "${symbolized}")
list(LENGTH frames frame_count)
list(LENGTH numbered numbered_count)

# Each row: what to look for, and in which text.
set(checks
  "the client's frames have no name in the trace|trace|client\\(\\+0x[0-9a-f]+\\)"
  "the waiting function, at the line where it waits|symbolized|\n#[0-9]+ +[^\n]*waitForRelease[^\n]* [^\n]*main\\.cpp:(${line_started}|${line_stuck})\n"
  "the worker's lambda, at its call of the waiting function|symbolized|main\\.cpp:${line_worker}\n"
  "libStrand's signal handler|symbolized|\n#[0-9]+ +Strand::[^\n]*[Ss]ignal[A-Za-z]*Handler")
set(failures "")
foreach(check IN LISTS checks)
  string(REGEX MATCH "^([^|]*)\\|([^|]*)\\|(.*)$" check "${check}")
  set(what "${CMAKE_MATCH_1}")
  set(text "${CMAKE_MATCH_2}")
  set(pattern "${CMAKE_MATCH_3}")
  if(NOT "${${text}}" MATCHES "${pattern}")
    string(APPEND failures "\n  ${what}: no match for ${pattern} in the ${text} text")
  endif()
endforeach()
if(frame_count EQUAL 0 OR NOT frame_count EQUAL numbered_count)
  string(APPEND failures "\n  ${frame_count} frames in the trace, ${numbered_count} numbered lines")
endif()
if(failures)
  message(FATAL_ERROR "strand-symbolize:${failures}")
endif()
