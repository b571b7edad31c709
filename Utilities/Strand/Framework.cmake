# macOS: clients load the library as Strand.framework. Included from this
# directory's CMakeLists.txt once the Strand target exists.
#
# A framework carries its public headers in Headers/, where <Strand/X.h> finds
# them through the framework search path; CMake cannot put a header FILE_SET on
# a framework, so they are listed as PUBLIC_HEADER instead. The install name is
# @rpath-relative, so a client finds the framework wherever it ships it.
list(TRANSFORM STRAND_PUBLIC_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/
  OUTPUT_VARIABLE strand_framework_headers)
target_sources(Strand PRIVATE ${strand_framework_headers})
set_target_properties(Strand PROPERTIES
  FRAMEWORK TRUE
  FRAMEWORK_VERSION A
  MACOSX_FRAMEWORK_IDENTIFIER org.strand.Strand
  PUBLIC_HEADER "${strand_framework_headers}"
  INSTALL_NAME_DIR "@rpath")
target_include_directories(Strand PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>)

# Apple's linker gets the exported interface as a list (Strand.exp), as the
# version script gives it on Linux. A linker without the option (Zig's, used to
# cross-build) exports every visible symbol instead; the tests then check the
# objects' visibility against the same interface.
include(CheckLinkerFlag)
check_linker_flag(CXX "LINKER:-exported_symbols_list,${CMAKE_CURRENT_SOURCE_DIR}/Strand.exp"
  STRAND_LINKER_HAS_EXPORTED_SYMBOLS_LIST)
if(STRAND_LINKER_HAS_EXPORTED_SYMBOLS_LIST)
  set_property(TARGET Strand APPEND PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/Strand.exp)
  target_link_options(Strand PRIVATE
    "LINKER:-exported_symbols_list,${CMAKE_CURRENT_SOURCE_DIR}/Strand.exp")
endif()
