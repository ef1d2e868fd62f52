# 32-bit PCs: pointers and longs of 4 bytes. A 64-bit kernel runs the programs itself; they find their
# loader and libraries in the target's packages.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(triplet i686-linux-gnu)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/i386-sysroot ABSOLUTE)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

# The old kind of path, because it holds for the libraries' own libraries, too.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--dynamic-linker=${CMAKE_SYSROOT}/lib/ld-linux.so.2 \
-Wl,--disable-new-dtags \
-Wl,-rpath,${CMAKE_SYSROOT}/lib/i386-linux-gnu:${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu")
