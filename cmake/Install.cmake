# Installs libStrand, its public headers, CMake package files and a pkg-config
# file. The internal static libraries are linked into libStrand and not installed.
include(CMakePackageConfigHelpers)

install(TARGETS Strand EXPORT StrandTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  FRAMEWORK DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(STRAND_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Strand)
install(EXPORT StrandTargets NAMESPACE Strand:: DESTINATION ${STRAND_CMAKE_DIR})
configure_package_config_file(cmake/StrandConfig.cmake.in
  ${PROJECT_BINARY_DIR}/StrandConfig.cmake
  INSTALL_DESTINATION ${STRAND_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StrandConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/StrandConfig.cmake
  ${PROJECT_BINARY_DIR}/StrandConfigVersion.cmake
  DESTINATION ${STRAND_CMAKE_DIR})

configure_file(cmake/strand.pc.in ${PROJECT_BINARY_DIR}/strand.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/strand.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
