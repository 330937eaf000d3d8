# SPDX-License-Identifier: MIT
# The flag cc_debug is one word, the program's and the library's: in programs that may be loaded anywhere and in those of
# a fixed address, which own a copy of it; that name the library's flag and that define their own; that are linked with
# the shared and the static library, or load the shared one as they run.
include(${PROJECT_SOURCE_DIR}/tests/c_api/program.cmake)

function(add_flag_test program)
    add_test(NAME ${program} COMMAND ${program})
    set_tests_properties(${program} PROPERTIES TIMEOUT 60)
endfunction()

set(anywhere_options -fPIE -pie)
set(fixed_options -fno-pie -no-pie)
foreach(suffix "" _static)
    foreach(address anywhere fixed)
        foreach(owner library program)
            set(program cache_debug_flag${suffix}_${address}_of_${owner})
            mova_c_program(${program} SOURCES debug_flag.c LINKS mova_container${suffix})
            list(GET ${address}_options 0 compiling)
            list(GET ${address}_options 1 linking)
            target_compile_options(${program} PRIVATE ${compiling})
            target_link_options(${program} PRIVATE ${linking})
            if(owner STREQUAL program)
                target_compile_definitions(${program} PRIVATE PROGRAM_DEFINES_THE_FLAG)
            endif()
            add_flag_test(${program})
        endforeach()
    endforeach()
endforeach()

# A program of a fixed address owns a copy: else its tests would show nothing. (MIPS and 64-bit
# PowerPC reach data through a table.)
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(mips|ppc64|powerpc64)")
    add_test(NAME cache_debug_flag_is_copied COMMAND ${CMAKE_COMMAND} -DREADELF=${CMAKE_READELF}
        -DPROGRAM=$<TARGET_FILE:cache_debug_flag_fixed_of_library> -P ${CMAKE_CURRENT_SOURCE_DIR}/flag_is_copied.cmake)
endif()

foreach(owner library program)
    set(program cache_debug_flag_loaded_of_${owner})
    mova_c_program(${program} SOURCES debug_flag_loaded.c LINKS ${CMAKE_DL_LIBS})
    set_target_properties(${program} PROPERTIES ENABLE_EXPORTS ON)
    target_compile_definitions(${program} PRIVATE CONTAINER_LIBRARY="$<TARGET_FILE:mova_container>"
        HOST_LIBRARY="$<TARGET_FILE:mova_host>")
    add_dependencies(${program} mova_container)
    if(owner STREQUAL program)
        target_compile_definitions(${program} PRIVATE PROGRAM_DEFINES_THE_FLAG)
    endif()
    add_flag_test(${program})
endforeach()
