# The reference of bsp.h and vboard.h as HTML, in one site with the documents: the target docs, which also judges
# whether the headers tell all and whether all links lead somewhere. It is installed where it was built.

find_program(BSP_DOXYGEN doxygen)
find_program(BSP_MANDOC mandoc)
set(has_markdown OFF)
if(BSP_PYTHON)
  execute_process(COMMAND ${BSP_PYTHON} -c "import markdown_it" RESULT_VARIABLE result ERROR_QUIET)
  if(result EQUAL 0)
    set(has_markdown ON)
  endif()
endif()
set(reference ${PROJECT_BINARY_DIR}/reference)
if(BSP_DOXYGEN AND BSP_MANDOC AND has_markdown)
  configure_file(docs/Doxyfile.in Doxyfile @ONLY)
  set(site ${PROJECT_SOURCE_DIR}/docs/site)
  file(GLOB site_sources CONFIGURE_DEPENDS *.md docs/*.md */README.md */*/README.md docs/man/*.[13] docs/*.svg
       docs/*.png docs/*.json)
  # A reference with gaps is written all the same, so a file of its own says that there are none.
  add_custom_command(
    OUTPUT ${reference}/complete
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${reference}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${reference}/html
    # The reference's menu leads back to the documents.
    COMMAND ${BSP_DOXYGEN} -l ${reference}/layout.xml
    COMMAND sed -i "s|<navindex>|&<tab type=\"user\" url=\"../index.html\" title=\"Documents\"/>|"
            ${reference}/layout.xml
    COMMAND ${BSP_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
    COMMAND ${BSP_PYTHON} -B ${site}/make_site.py ${PROJECT_SOURCE_DIR} ${reference}/html ${reference}/tags.xml
            ${BSP_MANDOC} ${PROJECT_VERSION}
    COMMAND ${BSP_PYTHON} -B ${site}/check_links.py ${reference}/html
    COMMAND ${CMAKE_COMMAND} -E touch ${reference}/complete
    DEPENDS ${PROJECT_BINARY_DIR}/Doxyfile include/bsp.h virtual_board/include/vboard.h ${site_sources}
            ${site}/make_site.py ${site}/check_links.py ${site}/site.css
    COMMENT "Writing the reference of bsp.h and vboard.h, and the documents around it"
    VERBATIM)
  add_custom_target(docs DEPENDS ${reference}/complete)
else()
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E echo "The reference is written by doxygen, mandoc and python3-markdown-it: install them, then configure anew"
    COMMAND ${CMAKE_COMMAND} -E false
    VERBATIM)
endif()
install(DIRECTORY ${reference}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
