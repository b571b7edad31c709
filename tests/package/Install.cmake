# Installs the build in BUILD_DIR into the fresh prefix PREFIX and checks what
# was installed: public headers only, and relocatable pkg-config files that
# leave the language level to the client.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

file(REMOVE_RECURSE ${PREFIX})
strand_run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})

foreach(header IN ITEMS Strand/Strand.h StringUtils/StringUtils.h RandomUtils/RandomUtils.h
    QuillAssert/QuillAssert.h)
  if(NOT EXISTS ${PREFIX}/include/${header})
    message(FATAL_ERROR "${header} is not installed")
  endif()
endforeach()
foreach(internal IN ITEMS Platform.h ScopedThreadNotifications.h NoDestructor.h
    ThreadRegistry.h PatternMatchers.h Patterns.h)
  file(GLOB_RECURSE found ${PREFIX}/*/${internal})
  if(found)
    message(FATAL_ERROR "Internal header installed: ${found}")
  endif()
endforeach()

strand_installed_files(pc_files pkgconfig/*.pc 4)
foreach(pc IN LISTS pc_files)
  file(READ ${pc} text)
  if(text MATCHES "-std=")
    message(FATAL_ERROR "${pc} sets the language level:\n${text}")
  endif()
  if(NOT text MATCHES "prefix=\\\${pcfiledir}")
    message(FATAL_ERROR "${pc} does not find the prefix from its own place:\n${text}")
  endif()
endforeach()
