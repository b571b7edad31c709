# The `docs` target: the API reference in <build>/docs/html, made by Doxygen
# from the public headers of libStrand and of the three static libraries (the
# headers that install), with every Doxygen warning an error. Without Doxygen
# (Debian: doxygen) or Python 3 the target only says what is missing and fails.
find_package(Doxygen QUIET)
find_package(Python3 QUIET COMPONENTS Interpreter)

set(STRAND_DOCS_OUTPUT_DIR ${PROJECT_BINARY_DIR}/docs)
set(STRAND_DOCS_INPUT "")
foreach(module IN ITEMS Strand StringUtils RandomUtils QuillAssert)
  string(APPEND STRAND_DOCS_INPUT " \"${PROJECT_SOURCE_DIR}/Utilities/${module}/include\"")
endforeach()
string(APPEND STRAND_DOCS_INPUT " \"${STRAND_GENERATED_INCLUDE_DIR}\"")

if(DOXYGEN_FOUND AND Python3_Interpreter_FOUND)
  configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${STRAND_DOCS_OUTPUT_DIR}/Doxyfile @ONLY)
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${STRAND_DOCS_OUTPUT_DIR}/html
    COMMAND Doxygen::doxygen ${STRAND_DOCS_OUTPUT_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "API reference (Doxygen): ${STRAND_DOCS_OUTPUT_DIR}/html/index.html"
    VERBATIM)
else()
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "The docs target needs Doxygen (Debian: doxygen) and Python 3"
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
endif()
