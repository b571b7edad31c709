# Fails if libStrand's public headers (INCLUDE_DIR) declare a function or a
# static data member that a client may use but cannot link: a public,
# out-of-line declaration in namespace Strand or quill that carries no
# STRAND_EXPORT, neither itself nor through its class. Library helpers belong
# in internal headers instead. Reads clang's dump of the declarations (CLANGXX).
cmake_minimum_required(VERSION 3.25)

set(source ${WORK_DIR}/AllPublicHeaders.cpp)
file(WRITE ${source} "#include <Strand/Strand.h>\n")

set(dump "")
foreach(namespace IN ITEMS Strand quill)
  execute_process(
    COMMAND ${CLANGXX} -std=c++20 -fsyntax-only -fno-color-diagnostics -I${INCLUDE_DIR}
      -Xclang -ast-dump -Xclang -ast-dump-filter=${namespace} ${source}
    OUTPUT_VARIABLE namespace_dump ERROR_VARIABLE errors RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "clang could not read the public headers:\n${errors}")
  endif()
  string(APPEND dump "${namespace_dump}")
endforeach()

# One list element per line; characters that CMake lists treat specially go.
string(REPLACE ";" "," dump "${dump}")
string(REPLACE "[" "(" dump "${dump}")
string(REPLACE "]" ")" dump "${dump}")
string(REPLACE "\n" ";" lines "${dump}")

set(failures "")
set(pending_depth -1)  # the declaration under inspection, and whether it passes
set(pending_ok FALSE)
set(pending_text "")
macro(settle_pending)
  if(pending_depth GREATER -1 AND NOT pending_ok)
    string(APPEND failures "\n  ${pending_text}")
  endif()
  set(pending_depth -1)
endmacro()

foreach(line IN LISTS lines)
  if(NOT line MATCHES "^([| `-]*)([A-Za-z]+)")
    continue()
  endif()
  string(LENGTH "${CMAKE_MATCH_1}" prefix_length)
  math(EXPR depth "${prefix_length} / 2")
  math(EXPR parent "${depth} - 1")
  set(kind ${CMAKE_MATCH_2})
  if(depth LESS_EQUAL pending_depth)
    settle_pending()
  endif()
  if(pending_depth EQUAL parent AND kind MATCHES "^(VisibilityAttr|CompoundStmt)$")
    set(pending_ok TRUE)  # exported itself, or defined in the header
  endif()
  set(kind_${depth} ${kind})

  if(kind STREQUAL "VisibilityAttr" AND kind_${parent} STREQUAL "CXXRecordDecl")
    set(exported_${parent} TRUE)
  elseif(kind STREQUAL "AccessSpecDecl" AND line MATCHES " (public|protected|private)$")
    set(access_${parent} ${CMAKE_MATCH_1})
  elseif(kind STREQUAL "CXXRecordDecl")
    set(exported_${depth} FALSE)
    set(access_${depth} private)
    if(line MATCHES " (struct|union) ")
      set(access_${depth} public)
    endif()
  elseif(kind MATCHES "^(FunctionDecl|CXXMethodDecl|CXXConstructorDecl|CXXDestructorDecl|VarDecl)$")
    set(member FALSE)
    if(parent GREATER -1 AND kind_${parent} STREQUAL "CXXRecordDecl")
      set(member TRUE)
    endif()
    set(candidate TRUE)
    if(line MATCHES " (implicit|inline|delete|default|pure)( |$)"
        OR (kind STREQUAL "VarDecl" AND NOT (member AND line MATCHES " static( |$)"))
        OR (member AND NOT access_${parent} STREQUAL "public"))
      set(candidate FALSE)
    endif()
    foreach(ancestor RANGE ${depth})
      if(ancestor LESS depth AND kind_${ancestor} MATCHES "Template|FriendDecl|ParmVarDecl")
        set(candidate FALSE)
      endif()
    endforeach()
    if(candidate)
      set(pending_depth ${depth})
      set(pending_ok FALSE)
      if(member AND exported_${parent})
        set(pending_ok TRUE)
      endif()
      string(REGEX REPLACE "^[| `-]*[A-Za-z]+ 0x[0-9a-f]+ (prev 0x[0-9a-f]+ )?" "" pending_text "${line}")
    endif()
  endif()
endforeach()
settle_pending()

if(failures)
  message(FATAL_ERROR "Public headers declare what libStrand does not export "
    "(mark it STRAND_EXPORT, or move it to an internal header):${failures}")
endif()
