# Builds the README's examples the way the README shows for pkg-config: the
# plain compiler, -std=c++20 and the flags pkg-config gives for the package
# installed in PREFIX; then runs them.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)

find_program(PKG_CONFIG NAMES pkg-config pkgconf REQUIRED)
file(GLOB pc_dir LIST_DIRECTORIES true ${PREFIX}/*/pkgconfig ${PREFIX}/*/*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
# What a system-wide default would give must not hide a wrong prefix.
unset(ENV{PKG_CONFIG_LIBDIR})
separate_arguments(cxx_flags UNIX_COMMAND "${CXX_FLAGS} ${LINKER_FLAGS}")

file(REMOVE_RECURSE ${WORK_DIR})
foreach(example_and_module IN ITEMS "framework|strand" "string-library|strand-stringutils"
    "own-store|strand")
  string(REPLACE "|" ";" example_and_module "${example_and_module}")
  list(GET example_and_module 0 example)
  list(GET example_and_module 1 module)
  strand_readme_example(${README} ${example} ${WORK_DIR}/${example}.cpp)
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ${module}
    OUTPUT_VARIABLE pc_flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "pkg-config knows no ${module} in ${pc_dir}")
  endif()
  separate_arguments(pc_flags UNIX_COMMAND "${pc_flags}")
  strand_run(${CXX_COMPILER} -std=c++20 ${cxx_flags} ${WORK_DIR}/${example}.cpp ${pc_flags}
    -o ${WORK_DIR}/${example})
  get_filename_component(libdir ${pc_dir} DIRECTORY)
  set(ENV{LD_LIBRARY_PATH} "${libdir}")
  strand_run(${WORK_DIR}/${example})
endforeach()
