# The header-only packages of the command-line tools. They lie among the host's own headers, which a
# cross compiler must not see, so they are reached through links in a folder of their own.
# What is compiled with those of the HTTP library takes long, so that has a target of its own.
function(bsp_add_header_packages target)
  add_library(${target} INTERFACE)
  set(links ${PROJECT_BINARY_DIR}/${target})
  file(MAKE_DIRECTORY ${links})
  foreach(package ${ARGN})
    string(MAKE_C_IDENTIFIER ${package} name)
    find_path(BSP_${name}_PARENT ${package} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
    if(NOT BSP_${name}_PARENT)
      message(FATAL_ERROR "The headers of ${package} are missing: install libcli11-dev, "
                          "nlohmann-json3-dev, libtomlplusplus-dev and libboost1.74-dev "
                          "(scripts/install-dependencies does), or set BSP_${name}_PARENT to the "
                          "folder that they are in")
    endif()
    file(CREATE_LINK ${BSP_${name}_PARENT}/${package} ${links}/${package} SYMBOLIC)
  endforeach()
  target_include_directories(${target} SYSTEM INTERFACE ${links})
endfunction()
bsp_add_header_packages(bsp_tool_headers CLI nlohmann toml++)
bsp_add_header_packages(bsp_http_headers boost)

# Most of the time of compiling a source of a tool goes into these, so they are compiled once. The
# configuration that clang-tidy looks at has none of them: there each source stands alone, with the
# headers that it names itself.
# A target that has the flags of another one takes its headers.
function(bsp_precompile_tool_headers target)
  if(ARGC GREATER 1)
    target_precompile_headers(${target} REUSE_FROM ${ARGV1})
    return()
  endif()
  target_precompile_headers(${target} PRIVATE
    <algorithm> <functional> <map> <memory> <optional> <span> <string> <vector>)
endfunction()
