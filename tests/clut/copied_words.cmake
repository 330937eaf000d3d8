# SPDX-License-Identifier: MIT
# Fails where a program that is linked at a fixed address does not have copies of the library's variables, or one that
# is independent of its position has: the test of such a program would then test something else.
#
# cmake -DREADELF=... -DPROGRAM=... -DCOPIED=... -P <this file>
cmake_minimum_required(VERSION 3.21)
execute_process(COMMAND ${READELF} --relocs --wide ${PROGRAM} OUTPUT_VARIABLE relocations COMMAND_ERROR_IS_FATAL ANY)
foreach(name clut_debug GE_WHITE GE_SYS32)
    set(copied OFF)
    if(relocations MATCHES "_COPY[^\n]* ${name}")
        set(copied ON)
    endif()
    if(copied AND NOT COPIED OR COPIED AND NOT copied)
        message(SEND_ERROR "${name}: copied is ${copied}, not ${COPIED}")
    endif()
endforeach()
