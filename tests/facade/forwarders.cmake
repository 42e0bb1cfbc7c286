# Reads the facade's declarations in the public header, so that no function of it can be forgotten:
#   FACADE_FORWARDERS   the file to include: FORWARDED(stem, (parameters), (arguments)) for each io
#                       function with a bsp function of its stem and parameters, OTHER(name) for the
#                       rest
#   FACADE_STEMS        the stems of the former
include(${PROJECT_SOURCE_DIR}/tests/support/header_declarations.cmake)
bsp_read_declarations(facade_text facade_declarations
  "BSP_API int32_t io[A-Za-z0-9]+\\([^)]*\\)@")

set(FACADE_STEMS "")
set(facade_lines "")
foreach(declaration IN LISTS facade_declarations)
  string(REGEX REPLACE ".* io([A-Za-z0-9]+)\\(.*" "\\1" stem "${declaration}")
  string(REGEX REPLACE ".*(\\(.*\\))@" "\\1" parameters "${declaration}")
  string(REGEX REPLACE "[A-Za-z0-9_ *]*[ *]([A-Za-z0-9_]+)" "\\1" arguments "${parameters}")
  string(REPLACE "," ", " arguments "${arguments}")
  string(REPLACE "(void)" "()" arguments "${arguments}")
  string(FIND "${facade_text}" "BSP_API int32_t bsp${stem}${parameters}@" twin)
  if(twin GREATER -1)
    list(APPEND FACADE_STEMS ${stem})
    string(APPEND facade_lines "FORWARDED(${stem}, ${parameters}, ${arguments})\n")
  else()
    string(APPEND facade_lines "OTHER(io${stem})\n")
  endif()
endforeach()
set(FACADE_FORWARDERS ${CMAKE_CURRENT_BINARY_DIR}/facade_forwarders.inc)
file(CONFIGURE OUTPUT ${FACADE_FORWARDERS} CONTENT "${facade_lines}" @ONLY)
