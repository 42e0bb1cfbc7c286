# Reads the codes of the RTL8239's commands, so that none can be forgotten:
#   POE_COMMAND_CODES   the file to include: COMMAND(name) for each command, MISC(name) for each
#                       sub-command of the one that has them.
set(poe_frame_header ${PROJECT_SOURCE_DIR}/poe/rtl8239/frame.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${poe_frame_header})
file(STRINGS ${poe_frame_header} poe_code_lines REGEX "^enum |^    k[A-Za-z0-9]+")

set(poe_codes "")
foreach(line IN LISTS poe_code_lines)
  if(line MATCHES "^enum ([A-Za-z]+)")
    string(TOUPPER ${CMAKE_MATCH_1} kind)
  elseif(line MATCHES "^    (k[A-Za-z0-9]+)")
    string(APPEND poe_codes "${kind}(${CMAKE_MATCH_1})\n")
  endif()
endforeach()
set(POE_COMMAND_CODES ${CMAKE_CURRENT_BINARY_DIR}/poe_command_codes.inc)
file(CONFIGURE OUTPUT ${POE_COMMAND_CODES} CONTENT "${poe_codes}" @ONLY)
