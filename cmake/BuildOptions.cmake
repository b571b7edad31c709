# Settings that every Strand library is built with. They are set on the targets,
# never on the directory, so a project that embeds Strand keeps its own flags.
set(STRAND_WARNING_OPTIONS -Wall -Wextra -Wpedantic -Wshadow)
if(STRAND_WARNINGS_AS_ERRORS)
  list(APPEND STRAND_WARNING_OPTIONS -Werror)
endif()

# C++20 (also required of every consumer, through the target's interface),
# no compiler extensions, hidden symbols unless marked for export, and
# position-independent code, so that the static libraries link into libStrand
# and into a client's shared libraries alike.
function(strand_library_settings target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE ${STRAND_WARNING_OPTIONS})
endfunction()

# A static library of the code base, installed as the package component
# <component> and known to clients as Strand::<component>. Its public headers
# are those under include/ of the calling directory; its sources also reach
# the internal headers through the Utilities root.
function(strand_add_static_library target component)
  add_library(${target} STATIC ${ARGN})
  add_library(Strand::${component} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${component}
    OUTPUT_NAME ${component})
  strand_library_settings(${target})
  file(GLOB_RECURSE public_headers CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_SOURCE_DIR}/include/*.h)
  target_sources(${target} PUBLIC FILE_SET HEADERS
    BASE_DIRS ${CMAKE_CURRENT_SOURCE_DIR}/include
    FILES ${public_headers})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/Utilities)
endfunction()

# Which sanitizer Strand and its tests are built with. The flags go on this
# directory tree only (a parent that embeds Strand keeps its own), and every
# build rule that depends on the choice tests this variable, not flag text.
#   address: AddressSanitizer + UndefinedBehaviorSanitizer, stopping at the first report
#   thread:  ThreadSanitizer
#   fuzzer:  address with libFuzzer's instrumentation (clang), for the fuzz targets
set(STRAND_SANITIZER "none" CACHE STRING "Sanitizer: none, address, thread or fuzzer")
set_property(CACHE STRAND_SANITIZER PROPERTY STRINGS none address thread fuzzer)
set(STRAND_SANITIZER_COMPILE_FLAGS "")
set(STRAND_SANITIZER_LINK_FLAGS "")
if(STRAND_SANITIZER STREQUAL "address")
  set(STRAND_SANITIZER_COMPILE_FLAGS
    -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  set(STRAND_SANITIZER_LINK_FLAGS -fsanitize=address,undefined)
elseif(STRAND_SANITIZER STREQUAL "thread")
  set(STRAND_SANITIZER_COMPILE_FLAGS -fsanitize=thread)
  set(STRAND_SANITIZER_LINK_FLAGS -fsanitize=thread)
elseif(STRAND_SANITIZER STREQUAL "fuzzer")
  set(STRAND_SANITIZER_COMPILE_FLAGS
    -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  set(STRAND_SANITIZER_LINK_FLAGS -fsanitize=address,undefined)
elseif(NOT STRAND_SANITIZER STREQUAL "none")
  message(FATAL_ERROR "STRAND_SANITIZER must be none, address, thread or fuzzer, not ${STRAND_SANITIZER}")
endif()
add_compile_options(${STRAND_SANITIZER_COMPILE_FLAGS})
add_link_options(${STRAND_SANITIZER_LINK_FLAGS})

# Which platform layer libStrand is built with: the host's own (native), or, on
# Linux, the Apple layer over the Darwin emulation in emulation/darwin
# (darwin-emulated), so that the macOS code runs under every test. An emulated
# build is for testing only: it installs nothing.
set(STRAND_PLATFORM "native" CACHE STRING "Platform layer: native or darwin-emulated")
set_property(CACHE STRAND_PLATFORM PROPERTY STRINGS native darwin-emulated)
if(NOT STRAND_PLATFORM MATCHES "^(native|darwin-emulated)$")
  message(FATAL_ERROR "STRAND_PLATFORM must be native or darwin-emulated, not ${STRAND_PLATFORM}")
endif()
if(STRAND_PLATFORM STREQUAL "darwin-emulated")
  if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
    message(FATAL_ERROR "STRAND_PLATFORM=darwin-emulated needs a Linux host")
  endif()
  set(STRAND_INSTALL OFF)
endif()
