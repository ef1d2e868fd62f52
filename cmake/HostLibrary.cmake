# The host's own library in place of the stand-in. It is checked when the build is configured: a
# wrong file is one clear line here, not a page of the linker's or a plug-in that does not load.

# What ELF says of a file: its class, its machine and its kind.
function(canservice_read_elf file class machine kind)
    execute_process(COMMAND ${CMAKE_READELF} -hW "${file}"
                    OUTPUT_VARIABLE header ERROR_QUIET)
    foreach(row IN ITEMS class:Class machine:Machine kind:Type)
        string(REPLACE : ";" row ${row})
        list(POP_FRONT row result field)
        string(REGEX MATCH "${field}: +([^\n]*)" found "${header}")
        set(${${result}} "${CMAKE_MATCH_1}" PARENT_SCOPE)
    endforeach()
endfunction()

# Fails unless `library` is a shared library for the machine that is built for and defines all that
# the plug-in imports from its host.
function(canservice_check_host_library library)
    if(NOT EXISTS "${library}" OR IS_DIRECTORY "${library}")
        message(FATAL_ERROR "${library}: no such file; name the host's library.")
    endif()
    canservice_read_elf("${library}" class machine kind)
    if(NOT kind MATCHES "^DYN")
        message(FATAL_ERROR "${library}: no shared library; name the host's .so file.")
    endif()

    # A file of the compiler's own shows what is built for.
    set(probe ${CMAKE_BINARY_DIR}/CMakeFiles/canservice-probe)
    try_compile(compiled SOURCE_FROM_CONTENT probe.cpp "int main() { return 0; }\n"
                COPY_FILE "${probe}")
    canservice_read_elf("${probe}" built_class built_machine unused)
    if(NOT "${class} ${machine}" STREQUAL "${built_class} ${built_machine}")
        message(FATAL_ERROR "${library}: made for ${machine} (${class}), but this compiler builds for \
${built_machine} (${built_class}); use the head unit's toolchain.")
    endif()

    # The frozen contract tells what the plug-in imports.
    file(STRINGS ${PROJECT_SOURCE_DIR}/tests/abi/contract.txt contract)
    set(needed)
    set(in_section FALSE)
    foreach(line IN LISTS contract)
        if(line MATCHES "^# ")
            string(COMPARE EQUAL "${line}" "# Symbols imported from the host library" in_section)
        elseif(in_section)
            list(APPEND needed ${line})
        endif()
    endforeach()
    execute_process(COMMAND ${CMAKE_NM} -DC --defined-only "${library}"
                    OUTPUT_VARIABLE symbols ERROR_QUIET)
    set(missing)
    foreach(symbol IN LISTS needed)
        string(FIND "${symbols}" " ${symbol}\n" plain)
        string(FIND "${symbols}" " ${symbol}@" versioned)
        if(plain EQUAL -1 AND versioned EQUAL -1)
            list(APPEND missing ${symbol})
        endif()
    endforeach()
    if(NOT needed)
        message(FATAL_ERROR "tests/abi/contract.txt names no symbol of the host's library.")
    endif()
    if(missing)
        list(LENGTH missing count)
        set(more)
        if(count GREATER 3)
            list(SUBLIST missing 0 3 missing)
            math(EXPR count "${count} - 3")
            set(more " and ${count} more")
        endif()
        list(JOIN missing ", " missing)
        message(FATAL_ERROR "${library}: lacks ${missing}${more}, which the plug-in needs.")
    endif()
endfunction()

# Adds the target canservicehost for the host's library and the folders of its headers.
function(canservice_import_host library)
    canservice_check_host_library("${library}")
    add_library(canservicehost INTERFACE)
    target_include_directories(canservicehost INTERFACE ${ARGN})
    target_link_libraries(canservicehost INTERFACE Qt5::Core)
    execute_process(COMMAND ${CMAKE_READELF} -dW "${library}" OUTPUT_VARIABLE dynamic ERROR_QUIET)
    if(dynamic MATCHES "\\(SONAME\\)")
        target_link_libraries(canservicehost INTERFACE "${library}")
    else()
        # Without a name of its own it is needed by what it was linked by: the file, not its path.
        get_filename_component(folder "${library}" DIRECTORY)
        get_filename_component(file "${library}" NAME)
        target_link_directories(canservicehost INTERFACE "${folder}")
        target_link_libraries(canservicehost INTERFACE "-l:${file}")
    endif()
endfunction()
