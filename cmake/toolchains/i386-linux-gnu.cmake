# 32-bit little-endian programs that an amd64 host runs by itself. Debian's g++-multilib excludes its
# cross compilers, the multilib packages of one compiler version do not; they leave the directory of
# the C library's machine-dependent headers to the caller.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc-12)
set(CMAKE_CXX_COMPILER g++-12)
foreach(language C CXX)
  set(CMAKE_${language}_FLAGS_INIT "-m32 -idirafter /usr/include/x86_64-linux-gnu")
endforeach()
# The same compiler makes the host's own kind, with which 32-bit programs there get along.
set(BSP_HOST_TRIPLET x86_64-linux-gnu)
set(BSP_HOST_FLAGS -m64)
