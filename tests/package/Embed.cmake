# Builds and runs the parent project in SOURCE_DIR, which embeds the Strand
# tree STRAND_SOURCE_DIR, with GoogleTest hidden from it; then checks that
# installing the parent installs nothing of Strand's.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

set(binary ${WORK_DIR}/build)
# The parent compiles Strand itself and links no sanitized library of this
# build, so it is built plain: what is checked here is the embedding.
set(CXX_FLAGS "")
set(LINKER_FLAGS "")
strand_build_and_run(${SOURCE_DIR} ${binary} parent
  -DSTRAND_SOURCE_DIR=${STRAND_SOURCE_DIR}
  -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON
  -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON)

if(EXISTS ${binary}/strand/CTestTestfile.cmake)
  message(FATAL_ERROR "Strand enabled testing inside the parent project")
endif()
strand_run(${CMAKE_COMMAND} --install ${binary} --prefix ${WORK_DIR}/prefix)
file(GLOB_RECURSE installed ${WORK_DIR}/prefix/*)
if(installed)
  message(FATAL_ERROR "Installing the parent installed Strand's files: ${installed}")
endif()
