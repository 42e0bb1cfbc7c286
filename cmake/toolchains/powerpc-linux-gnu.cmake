# Another 32-bit big-endian machine, on which a plain char is unsigned, with Debian's cross compiler.
# Programs of the build run under qemu-user, whose static build starts the faster of its two.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-ppc-static -L /usr/powerpc-linux-gnu)
