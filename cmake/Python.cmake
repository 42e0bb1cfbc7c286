# Where the system's Python looks for packages:
#   BSP_PYTHON         the interpreter
#   BSP_PYTHON_FOLDER  the folder of packages, from the prefix
find_program(BSP_PYTHON NAMES python3 HINTS /usr/bin NO_DEFAULT_PATH)
set(python_folder lib/python3/dist-packages) # of the system's own packages
if(BSP_PYTHON AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  execute_process(COMMAND ${BSP_PYTHON} -c "import sys; print('%d.%d' % sys.version_info[:2], end='')"
                  OUTPUT_VARIABLE version)
  set(python_folder lib/python${version}/dist-packages)
endif()
set(BSP_PYTHON_FOLDER ${python_folder} CACHE STRING "Where Python packages go, from the prefix")
