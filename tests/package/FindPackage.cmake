# Builds and runs the find_package consumer in SOURCE_DIR against the installed
# PREFIX, asking for COMPONENT ("" for libStrand alone). With EXPECT_ERROR set,
# configuring must fail with output containing it instead.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

set(binary ${WORK_DIR}/build)
if(COMPONENT STREQUAL "" OR COMPONENT STREQUAL "StringUtils")
  # These two consumers compile the README's examples.
  if(COMPONENT STREQUAL "")
    set(example framework)
  else()
    set(example string-library)
  endif()
  strand_readme_example(${README} ${example} ${WORK_DIR}/example.cpp)
  set(source ${WORK_DIR}/example.cpp)
else()
  set(source ${SOURCE_DIR}/${COMPONENT}.cpp)
endif()
set(arguments -DCMAKE_PREFIX_PATH=${PREFIX} -DSTRAND_COMPONENT=${COMPONENT}
  -DCONSUMER_SOURCE=${source})

if(DEFINED EXPECT_ERROR)
  file(REMOVE_RECURSE ${binary})
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${binary} -G ${GENERATOR} ${arguments}
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  # CMake wraps long messages: compare with the line breaks taken out.
  string(REGEX REPLACE "[ \t\n]+" " " flat_output "${out}${err}")
  string(FIND "${flat_output}" "${EXPECT_ERROR}" expected_at)
  if(result EQUAL 0 OR expected_at EQUAL -1)
    message(FATAL_ERROR "Expected configuring to fail with \"${EXPECT_ERROR}\":\n${out}\n${err}")
  endif()
  message(STATUS "Failed as expected:\n${err}")
else()
  strand_build_and_run(${SOURCE_DIR} ${binary} consumer ${arguments})
endif()
