# Flavours of code, as interface targets:
#   bsp_warnings    what all of the project's own code is held to
#   bsp_sanitizers  AddressSanitizer; empty unless BSP_SANITIZE is on
#   bsp_all_sanitizers  UndefinedBehaviorSanitizer too, where records, registers and frames are taken
#                   apart; tools and tests would take a third longer to build. Clang makes it tell
#                   fuzzers what was reached, too
#   bsp_coverage    counters of what is run; empty unless BSP_COVERAGE is on
#   bsp_program     programs that tests start again and again
#   bsp_bare        code that runs without a C++ run-time library: the library itself, and the part of
#                   the virtual board that is loaded into other programs

add_library(bsp_warnings INTERFACE)
target_compile_options(bsp_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Wpedantic
  -Wcast-align -Wcast-qual -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough
  -Wmissing-declarations -Wsign-conversion -Wundef -Wvla
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Wold-style-cast;-Woverloaded-virtual>
  $<$<BOOL:${BSP_WARNINGS_AS_ERRORS}>:-Werror>)

# What reports are to know of a target, where it is not its lines.
define_property(TARGET PROPERTY BSP_DEBUG_INFO INITIALIZE_FROM_VARIABLE TESTS_BSP_DEBUG_INFO)

add_library(bsp_sanitizers INTERFACE)
if(BSP_SANITIZE)
  # Line tables are all that the sanitizers' reports show, and take half of the time to write.
  set(debug_info $<TARGET_PROPERTY:BSP_DEBUG_INFO>)
  target_compile_options(bsp_sanitizers INTERFACE
    $<IF:$<BOOL:${debug_info}>,${debug_info},-g1> -fsanitize=address -fno-omit-frame-pointer)
  target_link_options(bsp_sanitizers INTERFACE -fsanitize=address,undefined)
  # The sanitizer knows each variable by its address. In a program that may lie anywhere a hundred
  # thousand of them are worked out at each start, which takes a third of it.
  target_link_options(bsp_sanitizers INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
  # The linker of the same house takes a third of the time.
  find_program(BSP_LLD ld.lld)
  if(BSP_LLD AND CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    target_link_options(bsp_sanitizers INTERFACE -fuse-ld=lld)
  endif()
endif()
add_library(bsp_all_sanitizers INTERFACE)
target_link_libraries(bsp_all_sanitizers INTERFACE bsp_sanitizers)
if(BSP_SANITIZE)
  target_compile_options(bsp_all_sanitizers INTERFACE
    -fsanitize=undefined -fno-sanitize-recover=all
    # What Clang needs for it is linked into programs of C++ alone.
    $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>
    # Fuzzers go by what an input reaches. What comparisons compare is not told: it would take a third more
    # time of every test.
    $<$<CXX_COMPILER_ID:Clang>:-fsanitize-coverage=inline-8bit-counters,pc-table>)
endif()

add_library(bsp_coverage INTERFACE)
if(BSP_COVERAGE)
  target_compile_options(bsp_coverage INTERFACE --coverage -fprofile-abs-path)
  target_link_options(bsp_coverage INTERFACE --coverage)
endif()

# What the loader does for them is translated anew at each start where an emulator runs them.
add_library(bsp_program INTERFACE)
if(CMAKE_CROSSCOMPILING_EMULATOR)
  target_link_options(bsp_program INTERFACE -static-libstdc++ -static-libgcc)
endif()

add_library(bsp_bare INTERFACE)
target_compile_options(bsp_bare INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fno-threadsafe-statics>
  -fvisibility=hidden -ffunction-sections -fdata-sections)

# Links a shared object of bare code with the C compiler, which brings no C++ run-time library along;
# a use of one is then an error of the link. What sanitizers put into it is found in the program.
function(bsp_link_bare target)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C)
  target_link_options(${target} PRIVATE -Wl,-z,text -Wl,--gc-sections -Wl,--as-needed
                                        $<$<NOT:$<BOOL:${BSP_SANITIZE}>>:-Wl,-z,defs>)
endfunction()
