# Compiles every source of the macOS platform layer (and the parts it shares
# with Linux) with clang -fsyntax-only
# against the declaration-only Apple headers in tools/apple-sdk, with the
# warnings the rest of the tree uses.
file(GLOB sources ${SOURCE_DIR}/Utilities/Strand/apple/*.cpp
  ${SOURCE_DIR}/Utilities/Strand/unix/*.cpp)
if(NOT sources)
  message(FATAL_ERROR "no sources in ${SOURCE_DIR}/Utilities/Strand/apple")
endif()
foreach(source IN LISTS sources)
  execute_process(
    COMMAND ${CLANGXX} -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror
      -isystem ${SOURCE_DIR}/tools/apple-sdk -I${SOURCE_DIR}/Utilities -I${SOURCE_DIR}/Utilities/Strand/include
      -I${SOURCE_DIR}/Utilities/StringUtils/include ${source}
    RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${source} does not compile:\n${errors}")
  endif()
  message(STATUS "ok: ${source}")
endforeach()
