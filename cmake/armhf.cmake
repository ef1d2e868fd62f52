# 32-bit ARM with a floating-point unit. The tests run under the emulator, which finds the target's
# libraries in the same place.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(triplet arm-linux-gnueabihf)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot ABSOLUTE)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L ${CMAKE_SYSROOT})
