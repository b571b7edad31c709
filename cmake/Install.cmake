# Installs libStrand (package Strand, target Strand::Strand) and the three
# static libraries as components of the same package (Strand::StringUtils,
# Strand::RandomUtils, Strand::QuillAssert), each with its public headers under
# the one include root, its own CMake targets file and its own pkg-config file.
# Internal headers are never installed.
include(CMakePackageConfigHelpers)

set(STRAND_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Strand)
set(STRAND_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# Listed in dependency order: the package file loads them in this order.
set(STRAND_COMPONENTS QuillAssert RandomUtils StringUtils)

# Every file belongs to one of two install components:
#   Runtime      what a program needs to run: libStrand.so.N (the framework on
#                macOS, which carries its headers inside);
#   Development  what building against Strand needs: the headers, the
#                libStrand.so link name, the static libraries, the CMake
#                package and the pkg-config files.
# INCLUDES DESTINATION puts the include root into the targets' include
# directories for consumers whose CMake predates file sets (3.16 and later
# work); newer ones also see the header file sets.
set(STRAND_INSTALL_DESTINATIONS
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
  FRAMEWORK DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(TARGETS strand_framework EXPORT StrandTargets ${STRAND_INSTALL_DESTINATIONS})
install(EXPORT StrandTargets NAMESPACE Strand:: DESTINATION ${STRAND_CMAKE_DIR}
  COMPONENT Development)
foreach(component IN LISTS STRAND_COMPONENTS)
  get_target_property(target Strand::${component} ALIASED_TARGET)
  install(TARGETS ${target} EXPORT Strand${component}Targets ${STRAND_INSTALL_DESTINATIONS})
  install(EXPORT Strand${component}Targets NAMESPACE Strand:: DESTINATION ${STRAND_CMAKE_DIR}
    COMPONENT Development)
endforeach()

configure_package_config_file(cmake/StrandConfig.cmake.in
  ${PROJECT_BINARY_DIR}/StrandConfig.cmake
  INSTALL_DESTINATION ${STRAND_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StrandConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/StrandConfig.cmake
  ${PROJECT_BINARY_DIR}/StrandConfigVersion.cmake
  DESTINATION ${STRAND_CMAKE_DIR} COMPONENT Development)

# pkg-config files find the prefix from their own place (${pcfiledir}), so the
# tree works wherever it is installed (cmake --install --prefix included). The
# language level is left to the client's flags: C++20 or later.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  message(FATAL_ERROR "Strand installs with relative CMAKE_INSTALL_LIBDIR and CMAKE_INSTALL_INCLUDEDIR only")
endif()
file(RELATIVE_PATH STRAND_PC_PREFIX_FROM_PCFILEDIR
  /prefix/${STRAND_PKGCONFIG_DIR} /prefix)
string(REGEX REPLACE "/$" "" STRAND_PC_PREFIX_FROM_PCFILEDIR "${STRAND_PC_PREFIX_FROM_PCFILEDIR}")

function(strand_pkgconfig_file file name description library libs_private)
  set(STRAND_PC_NAME "${name}")
  set(STRAND_PC_DESCRIPTION "${description}")
  set(STRAND_PC_LIBS "-L\${libdir} -l${library}")
  if(library STREQUAL "Strand" AND APPLE)
    set(STRAND_PC_LIBS "-F\${libdir} -framework Strand")
  endif()
  set(STRAND_PC_LIBS_PRIVATE "${libs_private}")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/strand.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${file} DESTINATION ${STRAND_PKGCONFIG_DIR}
    COMPONENT Development)
endfunction()

strand_pkgconfig_file(strand.pc Strand
  "Thread identity, names, cross-thread execution, stack traces and tracing context"
  Strand -pthread)
strand_pkgconfig_file(strand-stringutils.pc "Strand StringUtils"
  "Strand's string library: conversions, parsing, splitting, trimming, validation" StringUtils "")
strand_pkgconfig_file(strand-randomutils.pc "Strand RandomUtils"
  "Strand's process-wide seeded random engine behind a replaceable function" RandomUtils "")
strand_pkgconfig_file(strand-quillassert.pc "Strand QuillAssert"
  "Strand's soft assertions with replaceable hooks" QuillAssert "")
