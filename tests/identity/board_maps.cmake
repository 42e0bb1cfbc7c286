# Reads the two maps of the board, so that no entry of either can be forgotten:
#   BOARD_MAP_ENTRIES   the file to include: ENTRY(name) for each name that one of them defines. What
#                       the other lacks is not compiled.
set(board_map_names "")
foreach(map support/board_map.h virtual_board/devices/board_map.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${map})
  file(STRINGS ${PROJECT_SOURCE_DIR}/${map} definitions REGEX "^constexpr .*[ *]k[A-Za-z0-9]+ = ")
  foreach(definition IN LISTS definitions)
    string(REGEX REPLACE "^constexpr .*[ *](k[A-Za-z0-9]+) = .*" "\\1" name "${definition}")
    list(APPEND board_map_names ${name})
  endforeach()
endforeach()
list(REMOVE_DUPLICATES board_map_names)

set(board_map_lines "")
foreach(name IN LISTS board_map_names)
  string(APPEND board_map_lines "ENTRY(${name})\n")
endforeach()
set(BOARD_MAP_ENTRIES ${CMAKE_CURRENT_BINARY_DIR}/board_map_entries.inc)
file(CONFIGURE OUTPUT ${BOARD_MAP_ENTRIES} CONTENT "${board_map_lines}" @ONLY)
