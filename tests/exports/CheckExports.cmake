# Compares the defined dynamic symbols of LIBRARY (demangled) with the list in
# EXPECTED, and fails if any text of FORBIDDEN_TEXTS ('|'-separated) appears in
# the library's code or data sections.
find_program(NM nm REQUIRED)
find_program(OBJCOPY objcopy REQUIRED)

execute_process(COMMAND ${NM} -D -C --defined-only --format=posix ${LIBRARY}
  OUTPUT_VARIABLE nm_output RESULT_VARIABLE nm_result)
if(NOT nm_result EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()

# posix format: "<name> <type> <value> [<size>]"; the name may hold blanks.
string(REPLACE "\n" ";" nm_lines "${nm_output}")
set(actual "")
foreach(line IN LISTS nm_lines)
  if(line MATCHES "^(.*) [A-Za-z] [0-9a-f]+( [0-9a-f]+)?$")
    list(APPEND actual "${CMAKE_MATCH_1}")
  endif()
endforeach()
list(REMOVE_ITEM actual "_init" "_fini")
list(SORT actual)
list(REMOVE_DUPLICATES actual)

file(STRINGS ${EXPECTED} expected_lines)
set(expected "")
foreach(line IN LISTS expected_lines)
  if(NOT line STREQUAL "" AND NOT line MATCHES "^#")
    list(APPEND expected "${line}")
  endif()
endforeach()
list(SORT expected)

set(unexpected ${actual})
list(REMOVE_ITEM unexpected ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${actual})
if(unexpected OR missing)
  list(JOIN unexpected "\n  " unexpected_text)
  list(JOIN missing "\n  " missing_text)
  message(FATAL_ERROR "Exported symbols differ from ${EXPECTED}\n"
    "Exported but not listed:\n  ${unexpected_text}\n"
    "Listed but not exported:\n  ${missing_text}")
endif()
list(LENGTH actual count)
message(STATUS "libStrand exports exactly the ${count} listed symbols")

# Written beside the library, inside the build tree.
set(sections_file "${LIBRARY}.sections")
execute_process(COMMAND ${OBJCOPY} -O binary --only-section=.rodata --only-section=.text --only-section=.data --only-section=.data.rel.ro ${LIBRARY} ${sections_file}
  RESULT_VARIABLE objcopy_result)
if(NOT objcopy_result EQUAL 0)
  message(FATAL_ERROR "objcopy failed on ${LIBRARY}")
endif()
file(STRINGS ${sections_file} section_strings)
string(REPLACE "|" ";" forbidden "${FORBIDDEN_TEXTS}")
foreach(text IN LISTS forbidden)
  foreach(candidate IN LISTS section_strings)
    string(FIND "${candidate}" "${text}" position)
    if(NOT position EQUAL -1)
      message(FATAL_ERROR "Plain text '${text}' found in the sections of ${LIBRARY}")
    endif()
  endforeach()
endforeach()
