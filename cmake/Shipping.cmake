# What a build is made with that leaves the house: hardening, and nothing of where it was built. The
# development presets do without: their instructions are counted, their files are debugged.
option(BUILD_HARDENING "Harden what is built: stack protector, fortified calls, full RELRO" ON)

set(optimized $<NOT:$<CONFIG:Debug>>)
if(BUILD_HARDENING)
    add_compile_options(
        "$<${optimized}:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    add_link_options("LINKER:-z,relro,-z,now,-z,noexecstack,-z,text")
endif()

# Two builds of one commit are the same, byte by byte, wherever they are made.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
add_compile_options("$<$<CONFIG:Release,MinSizeRel>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=build;\
-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>")
