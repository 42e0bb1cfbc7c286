# bsp_read_declarations(text declarations pattern): the public header with single blanks and "@" for
# each semicolon, which would end an element of a list, and what of it the pattern finds.
function(bsp_read_declarations text declarations pattern)
  set(header ${PROJECT_SOURCE_DIR}/include/bsp.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(READ ${header} content)
  string(REPLACE ";" "@" content "${content}")
  string(REGEX REPLACE "[ \n]+" " " content "${content}")
  string(REGEX MATCHALL "${pattern}" found "${content}")
  set(${text} "${content}" PARENT_SCOPE)
  set(${declarations} "${found}" PARENT_SCOPE)
endfunction()
