# Cross build for the device's processor, 32-bit ARMv7-A with hardware
# floating point, using Debian's arm-linux-gnueabihf toolchain.  Test
# programs run under qemu-arm with the cross C library as their root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(KE_TRIPLE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${KE_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${KE_TRIPLE}-g++)
set(CMAKE_NM ${KE_TRIPLE}-nm CACHE FILEPATH "")
set(CMAKE_READELF ${KE_TRIPLE}-readelf CACHE FILEPATH "")
set(CMAKE_STRIP ${KE_TRIPLE}-strip CACHE FILEPATH "")

# The armhf packages (GoogleTest, libsafec) install under the multiarch
# directories of the host's root; the cross C library lives in its own.
set(CMAKE_LIBRARY_ARCHITECTURE ${KE_TRIPLE})
# Appended, so an image build can put its staging tree first.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${KE_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/${KE_TRIPLE})
