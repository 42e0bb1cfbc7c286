# The target: 32-bit big-endian MIPS with Debian's cross compiler. Programs of the build run under
# qemu-user, whose static build starts the faster of its two.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mips)
set(CMAKE_C_COMPILER mips-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER mips-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-mips-static -L /usr/mips-linux-gnu)
