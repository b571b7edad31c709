# macOS: clients load the library as Strand.framework.
#
# A framework carries its public headers in Headers/, where <Strand/X.h> finds
# them through the framework search path; CMake cannot put a header FILE_SET on
# a framework, so they are listed as PUBLIC_HEADER instead. The install name is
# @rpath-relative, so a client finds the framework wherever it ships it.
#
# Apple's linker gets the exported interface as a list (Strand.exp), as the
# version script gives it on Linux. A linker without the option (Zig's, used to
# cross-build) exports every visible symbol instead; the tests then check the
# objects' visibility against the same interface.
include(CheckLinkerFlag)

# Makes the shared library target into Strand.framework with the headers of
# public_headers (paths relative to this directory).
function(strand_make_framework target public_headers)
  set(dir ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
  list(TRANSFORM public_headers PREPEND ${dir}/)
  target_sources(${target} PRIVATE ${public_headers})
  set_target_properties(${target} PROPERTIES
    FRAMEWORK TRUE
    FRAMEWORK_VERSION A
    MACOSX_FRAMEWORK_IDENTIFIER org.strand.Strand
    MACOSX_FRAMEWORK_BUNDLE_VERSION ${PROJECT_VERSION}
    MACOSX_FRAMEWORK_SHORT_VERSION_STRING ${PROJECT_VERSION}
    PUBLIC_HEADER "${public_headers}"
    INSTALL_NAME_DIR "@rpath")
  # The copies into Headers/ are made by the framework's own link: Ninja hangs
  # them off the target's compile step otherwise, which a target whose objects
  # all come from strand_objects never runs (building only the framework left
  # Headers/ empty).
  get_target_property(framework_name ${target} OUTPUT_NAME)
  set(headers_dir ${CMAKE_CURRENT_BINARY_DIR}/${framework_name}.framework/Versions/A/Headers)
  foreach(header IN LISTS public_headers)
    get_filename_component(header_name ${header} NAME)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${headers_dir}/${header_name})
  endforeach()
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${dir}/include>)

  check_linker_flag(CXX "LINKER:-exported_symbols_list,${dir}/Strand.exp"
    STRAND_LINKER_HAS_EXPORTED_SYMBOLS_LIST)
  if(STRAND_LINKER_HAS_EXPORTED_SYMBOLS_LIST)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${dir}/Strand.exp)
    target_link_options(${target} PRIVATE "LINKER:-exported_symbols_list,${dir}/Strand.exp")
  endif()
endfunction()
