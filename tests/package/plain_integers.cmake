# Reads the declarations in the public header, so that no function of it can be forgotten:
#   PLAIN_CALLS   the file to include: a call of each function, with a plain 1 for each number and
#                 `anything` for each pointer
include(${PROJECT_SOURCE_DIR}/tests/support/header_declarations.cmake)
bsp_read_declarations(text declarations
  "BSP_API (const )?[A-Za-z0-9_]+ [*]?[A-Za-z0-9_]+\\([^)]*\\)@")

set(calls "")
foreach(declaration IN LISTS declarations)
  string(REGEX REPLACE ".*[ *]([A-Za-z0-9_]+)\\(.*" "\\1" name "${declaration}")
  string(REGEX REPLACE ".*\\((.*)\\)@" "\\1" parameters "${declaration}")
  string(REGEX REPLACE "[^,]*[*][^,]*" " anything" arguments "${parameters}")
  string(REGEX REPLACE "(^|,) ?[A-Za-z0-9_]+ [A-Za-z0-9_]+" "\\1 1" arguments "${arguments}")
  string(REPLACE "void" "" arguments "${arguments}")
  string(STRIP "${arguments}" arguments)
  string(APPEND calls "static_cast<void>(${name}(${arguments}))@\n")
endforeach()
string(REPLACE "@" ";" calls "${calls}")
set(PLAIN_CALLS ${CMAKE_CURRENT_BINARY_DIR}/plain_calls.inc)
file(CONFIGURE OUTPUT ${PLAIN_CALLS} CONTENT "${calls}" @ONLY)
