# Installs the build in BUILD_DIR component by component and checks that
# Runtime holds libStrand's run-time files only, that Development holds what
# building against Strand needs and no run-time file, and that the two
# together are exactly the full install in PREFIX: no file is left in the
# unnamed default component, none is in both.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

# Sets <out> to the files and links installed under <prefix>, relative to it.
function(installed_tree out prefix)
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${prefix} ${prefix}/*)
  list(SORT files)
  set(${out} ${files} PARENT_SCOPE)
endfunction()

foreach(component IN ITEMS Runtime Development)
  file(REMOVE_RECURSE ${WORK_DIR}/${component})
  strand_run(${CMAKE_COMMAND} --install ${BUILD_DIR} --component ${component}
    --prefix ${WORK_DIR}/${component})
  installed_tree(${component} ${WORK_DIR}/${component})
endforeach()
installed_tree(everything ${PREFIX})

# Runtime: the shared library under its versioned names (or the framework).
set(unexpected ${Runtime})
list(FILTER unexpected EXCLUDE REGEX "^lib[^/]*/(libStrand\\.so\\.[0-9.]+|Strand\\.framework/.*)$")
if(NOT Runtime OR unexpected)
  message(FATAL_ERROR "Runtime must hold libStrand's run-time files only; it has: ${Runtime}")
endif()

# Development: headers, link name, static libraries, package files; no run-time file.
# A framework is one bundle: libStrand's headers and link name travel in it.
set(expected
  "Development|^include/StringUtils/StringUtils\\.h$" "Development|^lib[^/]*/libStringUtils\\.a$"
  "Development|^lib[^/]*/cmake/Strand/StrandConfig\\.cmake$" "Development|^lib[^/]*/pkgconfig/strand\\.pc$")
if(Runtime MATCHES "Strand\\.framework/")
  list(APPEND expected "Runtime|/Strand\\.framework/Versions/[^/]+/Headers/Version\\.h$")
else()
  list(APPEND expected "Development|^include/Strand/Strand\\.h$" "Development|^include/Strand/Version\\.h$"
    "Development|^lib[^/]*/libStrand\\.so$")
endif()
foreach(component_and_pattern IN LISTS expected)
  string(REGEX MATCH "^([A-Za-z]+)\\|(.*)$" component_and_pattern "${component_and_pattern}")
  set(matches ${${CMAKE_MATCH_1}})
  list(FILTER matches INCLUDE REGEX "${CMAKE_MATCH_2}")
  if(NOT matches)
    message(FATAL_ERROR "${CMAKE_MATCH_1} lacks ${CMAKE_MATCH_2}; it has: ${${CMAKE_MATCH_1}}")
  endif()
endforeach()

# A file left to the default component is missing here; one in both is listed twice.
set(union ${Runtime} ${Development})
list(SORT union)
if(NOT union STREQUAL everything)
  message(FATAL_ERROR "Runtime and Development together are not the full install:\n"
    "  components: ${union}\n  full install: ${everything}")
endif()
