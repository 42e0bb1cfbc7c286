# Writes the source of a function that gives files:
# `cmake -D FUNCTION=NAME -D OUTPUT=FILE -D FILES=PATH;... -P embed_files.cmake`.
set(types
  "html=text/html" "css=text/css" "js=text/javascript" "svg=image/svg+xml" "json=application/json")
set(contents "")
set(rows "")
set(number 0)
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  get_filename_component(extension ${file} LAST_EXT)
  string(SUBSTRING "${extension}" 1 -1 extension)
  set(type "")
  foreach(pair IN LISTS types)
    if(pair MATCHES "^${extension}=(.*)$")
      set(type "${CMAKE_MATCH_1}; charset=utf-8")
    endif()
  endforeach()
  if(type STREQUAL "")
    message(FATAL_ERROR "${file}: a page has no files of this kind; the kinds are in embed_files.cmake")
  endif()
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND contents "constexpr char kFile${number}[] = {${bytes}'\\0'};\n")
  string(APPEND rows "    {\"${name}\", \"${type}\", {kFile${number}, sizeof(kFile${number}) - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "#include \"virtual_board/server/page_files.h\"

namespace ${FUNCTION}Content {

${contents}
constexpr vboard::server::PageFile kFiles[] = {
${rows}};

} // namespace ${FUNCTION}Content

std::span<const vboard::server::PageFile> vboard::server::${FUNCTION}() {
    return ${FUNCTION}Content::kFiles;
}
")
