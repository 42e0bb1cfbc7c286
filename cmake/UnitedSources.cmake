# Most of the time of compiling a tool's source goes into the headers and templates that it shares with
# its neighbours. Where nothing is compiled a second time, a folder's sources are compiled as one.
option(BSP_UNITE_SOURCES "Compile the sources of a folder as one, where they are many" OFF)

# To be called when the target has all of its sources.
function(bsp_unite_sources target)
  if(NOT BSP_UNITE_SOURCES)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    get_filename_component(folder ${source} DIRECTORY)
    set_property(SOURCE ${source} PROPERTY UNITY_GROUP "folder_${folder}")
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()
