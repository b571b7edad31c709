# <Strand/Version.h>: the project's version as macros, generated into the build
# tree and installed with libStrand's public headers.
set(STRAND_GENERATED_INCLUDE_DIR ${PROJECT_BINARY_DIR}/generated/include)
set(STRAND_VERSION_HEADER ${STRAND_GENERATED_INCLUDE_DIR}/Strand/Version.h)
configure_file(${CMAKE_CURRENT_LIST_DIR}/Version.h.in ${STRAND_VERSION_HEADER} @ONLY)

if(APPLE)
  # A framework carries its headers as PUBLIC_HEADER (see Framework.cmake).
  target_sources(strand_framework PRIVATE ${STRAND_VERSION_HEADER})
  set_property(TARGET strand_framework APPEND PROPERTY PUBLIC_HEADER ${STRAND_VERSION_HEADER})
  # Copied into Headers/ by the framework's own link, as the others are.
  get_target_property(framework_dir strand_framework BINARY_DIR)
  get_target_property(framework_name strand_framework OUTPUT_NAME)
  set_property(TARGET strand_framework APPEND PROPERTY LINK_DEPENDS
    ${framework_dir}/${framework_name}.framework/Versions/A/Headers/Version.h)
  target_include_directories(strand_framework PUBLIC
    $<BUILD_INTERFACE:${STRAND_GENERATED_INCLUDE_DIR}>)
else()
  target_sources(strand_framework PUBLIC FILE_SET HEADERS
    BASE_DIRS ${STRAND_GENERATED_INCLUDE_DIR}
    FILES ${STRAND_VERSION_HEADER})
endif()
# The static form that Strand's own tests link sees it too.
target_include_directories(strand_objects PUBLIC $<BUILD_INTERFACE:${STRAND_GENERATED_INCLUDE_DIR}>)
