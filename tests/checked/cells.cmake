# SPDX-License-Identifier: MIT
# Runs every cell of a program of misuses under mova-check, with its misuse and without: see misuse.h.
#
# cmake -DCHECK=<mova-check> -DPROGRAM=... -DSOURCE=<the program's file> -P <this file>
cmake_minimum_required(VERSION 3.21)

unset(ENV{MOVA_CHECK_LOG})
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE cells COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${cells}" cells)
string(REPLACE "\n" ";" cells "${cells}")
if(NOT cells)
    message(FATAL_ERROR "there are no cells")
endif()
string(REPLACE "." "\\." source "${SOURCE}")

foreach(cell IN LISTS cells)
    string(REGEX MATCH "^([^|]+)\\|[0-9]+\\|(.*)$" whole "${cell}")
    set(name "${CMAKE_MATCH_1}")
    set(expected "mova: ${CMAKE_MATCH_2}\n")

    set(ENV{MOVA_CHECK} abort)
    if(name MATCHES "^order ")
        set(ENV{MOVA_CHECK} abort,order)
    endif()
    execute_process(COMMAND ${CHECK} ${PROGRAM} ${name} OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
    string(FIND "${said}" "${expected}" position)
    if(NOT position EQUAL 0)
        message(SEND_ERROR "${name}: expected\n${expected}but it says\n${said}(${status})")
    elseif(NOT said MATCHES "^[^\n]*\n  in         [^ \n][^\n]* +${source}:[0-9]+\n")
        message(SEND_ERROR "${name}: does not say where:\n${said}")
    endif()
    # Containers are made and released in the program, where its functions call those of headers too.
    string(REGEX MATCHALL "(made|released) in [^\n]*" places "${said}")
    list(FILTER places EXCLUDE REGEX " ${source}:[0-9]+$")
    if(places)
        message(SEND_ERROR "${name}: does not say where in the program: ${places}")
    elseif(status EQUAL 0)
        message(SEND_ERROR "${name}: was not aborted")
    endif()

    execute_process(COMMAND ${CHECK} ${PROGRAM} ${name} right OUTPUT_VARIABLE said ERROR_VARIABLE said
                    RESULT_VARIABLE status)
    if(NOT status EQUAL 0 OR NOT said MATCHES "^mova: [0-9]+ calls checked, 0 misuses; 0 containers and 0 blocks left\n$")
        message(SEND_ERROR "${name}, without its misuse: it says\n${said}(${status})")
    endif()
endforeach()
