# SPDX-License-Identifier: MIT
# The checked library exports what the ordinary one does, as functions and variables as there, and what begins with
# mova_checked_ besides, and functions that set how faults are handled; its SONAME is the same.
#
# cmake -DCHECKED=... -DORDINARY=... -DNM=... -DREADELF=... -P <this file>
cmake_minimum_required(VERSION 3.21)
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/names.cmake)

foreach(library CHECKED ORDINARY)
    execute_process(COMMAND ${NM} -D --defined-only --format=posix ${${library}} OUTPUT_VARIABLE symbols
                    COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n ]+ [A-Za-z] " ${library}_names "${symbols}")
    execute_process(COMMAND ${READELF} -d ${${library}} OUTPUT_VARIABLE section COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCH "SONAME[^\n]*" ${library}_soname "${section}")
endforeach()
list(FILTER CHECKED_names EXCLUDE REGEX "^mova_checked_|^(sigaction|signal|ssignal|bsd_signal|__sysv_signal|sysv_signal|sigset) T $")
report_surplus("the checked library exports besides" "${CHECKED_names}" "${ORDINARY_names}")
report_surplus("the checked library does not export" "${ORDINARY_names}" "${CHECKED_names}")
if(NOT CHECKED_soname STREQUAL ORDINARY_soname)
    message(SEND_ERROR "${CHECKED_soname} is not ${ORDINARY_soname}")
endif()
