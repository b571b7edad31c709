# Checks that the shared library exports exactly the interface listed in
# EXPECTED, whichever standard library and object format it was built with:
# demangled names are normalised (inline namespaces and ABI tags dropped,
# std::string / std::ostream / ThreadId spelled alike) before they are compared.
#
# ELF (Linux): LIBRARY is libStrand.so; its dynamic symbol table (NM, the
# toolchain's GNU nm, CMAKE_NM) is compared, and no text of FORBIDDEN_TEXTS
# ('|'-separated) may appear in its code or data sections (OBJCOPY, the
# toolchain's CMAKE_OBJCOPY: the host's may not read a cross-built library).
#
# Mach-O (macOS): OBJECTS holds the framework's objects and internal archives.
# Every defined symbol of them that is neither local nor private extern must be
# listed (NM, llvm-nm), and linking them with LLD (ld64.lld) and the export list
# EXPORT_LIST must export exactly the listed symbols, as Apple's linker does.
# CXXFILT (llvm-cxxfilt) demangles the Mach-O names.

# Sets out_var to name in the form both sides are compared in.
function(normalize name out_var)
  string(REGEX REPLACE "std::__[A-Za-z0-9_]+::" "std::" name "${name}")
  string(REGEX REPLACE "\\[abi:[A-Za-z0-9_]+\\]" "" name "${name}")
  string(REPLACE "> >" ">>" name "${name}")
  string(REPLACE "std::basic_string<char, std::char_traits<char>, std::allocator<char>>"
    "std::string" name "${name}")
  string(REPLACE "std::basic_ostream<char, std::char_traits<char>>" "std::ostream" name "${name}")
  string(REGEX REPLACE ", std::allocator<[^<>]*>>" ">" name "${name}")
  string(REGEX REPLACE "std::chrono::duration<long( long)?, std::ratio<1l, 1l>>"
    "std::chrono::seconds" name "${name}")
  string(REGEX REPLACE "std::chrono::duration<long( long)?, std::ratio<1l, 1000l>>"
    "std::chrono::milliseconds" name "${name}")
  # pthread_t is an integer on Linux and a pointer on macOS.
  string(REGEX REPLACE "std::tuple<[^<>,]+, int, unsigned int>" "Strand::ThreadId" name "${name}")
  set(${out_var} "${name}" PARENT_SCOPE)
endfunction()

# Runs the command in ARGN and sets out_var to its output; fails if it fails.
function(capture out_var)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output RESULT_VARIABLE result
    ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Failed: ${ARGN}\n${errors}")
  endif()
  set(${out_var} "${output}" PARENT_SCOPE)
endfunction()

# Demangles the Mach-O names (leading underscore) in the list named by var.
function(demangle_macho var)
  list(JOIN ${var} "\n" text)
  set(file "${WORK_DIR}/mangled.txt")
  file(WRITE ${file} "${text}\n")
  capture(demangled ${CXXFILT} -_ INPUT_FILE ${file})
  string(STRIP "${demangled}" demangled)
  string(REPLACE "\n" ";" demangled "${demangled}")
  set(${var} "${demangled}" PARENT_SCOPE)
endfunction()

file(STRINGS ${EXPECTED} expected_lines)
set(expected "")
foreach(line IN LISTS expected_lines)
  if(NOT line STREQUAL "" AND NOT line MATCHES "^#")
    normalize("${line}" line)
    list(APPEND expected "${line}")
  endif()
endforeach()
list(SORT expected)
list(REMOVE_DUPLICATES expected)

# Fails unless the demangled names in the list named by var are the expected set.
function(compare what var)
  set(actual "")
  foreach(name IN LISTS ${var})
    normalize("${name}" name)
    list(APPEND actual "${name}")
  endforeach()
  list(SORT actual)
  list(REMOVE_DUPLICATES actual)
  set(unexpected ${actual})
  list(REMOVE_ITEM unexpected ${expected})
  set(missing ${expected})
  list(REMOVE_ITEM missing ${actual})
  if(unexpected OR missing)
    list(JOIN unexpected "\n  " unexpected_text)
    list(JOIN missing "\n  " missing_text)
    message(FATAL_ERROR "${what}: exported symbols differ from ${EXPECTED}\n"
      "Exported but not listed:\n  ${unexpected_text}\n"
      "Listed but not exported:\n  ${missing_text}")
  endif()
  list(LENGTH actual count)
  message(STATUS "${what} exports exactly the ${count} listed symbols")
endfunction()

if(LIBRARY)
  capture(nm_output ${NM} -D -C --defined-only --format=posix ${LIBRARY})
  # posix format: "<name> <type> <value> [<size>]"; the name may hold blanks.
  string(REPLACE "\n" ";" nm_lines "${nm_output}")
  set(exported "")
  foreach(line IN LISTS nm_lines)
    if(line MATCHES "^(.*) [A-Za-z] [0-9a-f]+( [0-9a-f]+)?$")
      list(APPEND exported "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  list(REMOVE_ITEM exported "_init" "_fini")
  compare("${LIBRARY}" exported)

  # Written beside the library, inside the build tree.
  set(sections_file "${LIBRARY}.sections")
  capture(ignored ${OBJCOPY} -O binary --only-section=.rodata --only-section=.text
    --only-section=.data --only-section=.data.rel.ro ${LIBRARY} ${sections_file})
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
else()
  file(REMOVE_RECURSE ${WORK_DIR})
  file(MAKE_DIRECTORY ${WORK_DIR})

  # Object level: "<value> (<segment>,<section>) [weak] external <name>" for
  # visible symbols, "private external" for hidden ones.
  set(visible "")
  foreach(object IN LISTS OBJECTS)
    capture(nm_output ${NM} -m --defined-only ${object})
    string(REPLACE "\n" ";" nm_lines "${nm_output}")
    foreach(line IN LISTS nm_lines)
      if(line MATCHES "\\) (weak )?external ([^ ]+)$")
        list(APPEND visible "${CMAKE_MATCH_2}")
      endif()
    endforeach()
  endforeach()
  demangle_macho(visible)
  compare("The framework's objects" visible)

  # Link level, with the export list that Apple's linker gets.
  set(dylib ${WORK_DIR}/libStrandExports.dylib)
  capture(ignored ${LLD} -dylib -arch arm64 -platform_version macos 13.0 13.0
    -undefined dynamic_lookup -exported_symbols_list ${EXPORT_LIST} -o ${dylib} ${OBJECTS})
  capture(nm_output ${NM} -g --defined-only --just-symbol-name ${dylib})
  string(STRIP "${nm_output}" nm_output)
  string(REPLACE "\n" ";" exported "${nm_output}")
  demangle_macho(exported)
  compare("Linked with ${EXPORT_LIST}" exported)
endif()
