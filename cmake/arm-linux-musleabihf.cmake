# The device's own C library: the library alone, built against musl for
# ARMv7-A.  Debian ships musl for this triple as a driver file (musl-gcc.specs) for the
# arm-linux-gnueabihf compiler, so the same compiler is used with musl's
# headers, start files and libc.so in place of glibc's.
#
# The library includes only header-only parts of the C++ library (array,
# cstdint, cstring, cstddef, cstdio), taken from the cross compiler's
# libstdc++.  Its configuration header asks for the glibc version with
# __GLIBC_PREREQ, which musl does not define: it is defined here as "not
# glibc", which only turns off glibc-only features of threads and gets.
# Nothing links libstdc++, so only the library target can be built.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(KE_TRIPLE arm-linux-gnueabihf)
set(KE_MUSL_SPECS /usr/lib/arm-linux-musleabihf/musl-gcc.specs)
set(KE_CXX_HEADERS /usr/${KE_TRIPLE}/include/c++/12)

set(CMAKE_C_COMPILER ${KE_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${KE_TRIPLE}-g++)
set(CMAKE_NM ${KE_TRIPLE}-nm CACHE FILEPATH "")
set(CMAKE_READELF ${KE_TRIPLE}-readelf CACHE FILEPATH "")
set(CMAKE_STRIP ${KE_TRIPLE}-strip CACHE FILEPATH "")

set(CMAKE_C_FLAGS_INIT "-specs ${KE_MUSL_SPECS}")
set(CMAKE_CXX_FLAGS_INIT "-specs ${KE_MUSL_SPECS} -isystem ${KE_CXX_HEADERS} -isystem ${KE_CXX_HEADERS}/${KE_TRIPLE} '-D__GLIBC_PREREQ(major,minor)=0'")

# Compiler checks compile but do not link: there is no C++ runtime for musl.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
