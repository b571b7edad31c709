# Strand.framework as a bundle: building only the framework target puts every
# public header into Headers/ (removed first, so the build has to make them),
# and Info.plist carries the project's version.
#
# -DBUILD_DIR= the build tree, -DFRAMEWORK= the framework directory,
# -DHEADERS= the public headers' names, -DVERSION= the project version.
file(REMOVE_RECURSE ${FRAMEWORK}/Versions/A/Headers)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD_DIR} --target strand_framework
  RESULT_VARIABLE built OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT built EQUAL 0)
  message(FATAL_ERROR "building strand_framework failed:\n${output}")
endif()
foreach(header IN LISTS HEADERS)
  if(NOT EXISTS ${FRAMEWORK}/Headers/${header})
    message(FATAL_ERROR "Strand.framework/Headers/${header} missing after building strand_framework")
  endif()
endforeach()
file(READ ${FRAMEWORK}/Resources/Info.plist plist)
foreach(key CFBundleVersion CFBundleShortVersionString)
  if(NOT plist MATCHES "<key>${key}</key>[ \t\r\n]*<string>${VERSION}</string>")
    message(FATAL_ERROR "Info.plist: ${key} is not ${VERSION}:\n${plist}")
  endif()
endforeach()
