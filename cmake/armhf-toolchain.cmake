# Cross build for the 32-bit ARM target (Debian's g++-arm-linux-gnueabihf).
# Tests run under qemu-user through CMake's cross-compiling emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(PALVET_ARMHF_SYSROOT /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH ${PALVET_ARMHF_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The cross libraries first: with Debian's armhf multiarch libc installed too,
# the loader's cache would otherwise mix its libc with the cross loader.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${PALVET_ARMHF_SYSROOT} -E LD_LIBRARY_PATH=${PALVET_ARMHF_SYSROOT}/lib)
