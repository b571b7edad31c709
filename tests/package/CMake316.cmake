# The installed targets files must give include directories to consumers whose
# CMake predates header file sets: the file-set block is skipped there, so the
# include root has to be set as a plain INTERFACE_INCLUDE_DIRECTORIES property.
# Then the 3.16 consumer in SOURCE_DIR is built against PREFIX and run.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

strand_installed_files(targets_files cmake/Strand/Strand*Targets.cmake 4)
foreach(targets_file IN LISTS targets_files)
  file(READ ${targets_file} text)
  # Drop the blocks that only CMake 3.23 and later read.
  while(TRUE)
    string(FIND "${text}" "if(NOT CMAKE_VERSION VERSION_LESS \"3.23" block_start)
    if(block_start EQUAL -1)
      break()
    endif()
    string(SUBSTRING "${text}" 0 ${block_start} before)
    string(SUBSTRING "${text}" ${block_start} -1 after)
    string(FIND "${after}" "endif()" block_end)
    math(EXPR block_end "${block_end} + 7")
    string(SUBSTRING "${after}" ${block_end} -1 after)
    set(text "${before}${after}")
  endwhile()
  if(text MATCHES "FILE_SET")
    message(FATAL_ERROR "${targets_file}: a file-set block was not recognised; check this test's pattern:\n${text}")
  endif()
  if(NOT text MATCHES "INTERFACE_INCLUDE_DIRECTORIES \"\\\${_IMPORT_PREFIX}/include\"")
    message(FATAL_ERROR "${targets_file} gives no include directory without file sets:\n${text}")
  endif()
endforeach()

strand_build_and_run(${SOURCE_DIR} ${WORK_DIR}/build consumer -DCMAKE_PREFIX_PATH=${PREFIX})
