# The reference of bsp.h and vboard.h as HTML: the target docs, which also judges whether the headers tell all. It is
# installed where it was built.

find_program(BSP_DOXYGEN doxygen)
set(reference ${PROJECT_BINARY_DIR}/reference)
if(BSP_DOXYGEN)
  configure_file(docs/Doxyfile.in Doxyfile @ONLY)
  # A reference with gaps is written all the same, so a file of its own says that there are none.
  add_custom_command(
    OUTPUT ${reference}/complete
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${reference}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${reference}
    COMMAND ${BSP_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
    COMMAND ${CMAKE_COMMAND} -E touch ${reference}/complete
    DEPENDS ${PROJECT_BINARY_DIR}/Doxyfile docs/reference.md include/bsp.h
            virtual_board/include/vboard.h
    COMMENT "Writing the reference of bsp.h and vboard.h"
    VERBATIM)
  add_custom_target(docs DEPENDS ${reference}/complete)
else()
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "The reference is written by doxygen: install it, then configure anew"
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
endif()
install(DIRECTORY ${reference}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
