# SPDX-License-Identifier: MIT
# Compares the lines that the compiler warns of with those that say so: "unused-result", "nonnull".
#
# cmake -DCOMPILER=... -DSOURCE=... -DINCLUDE=... -P <this file>
cmake_minimum_required(VERSION 3.21)
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/names.cmake)

execute_process(COMMAND ${COMPILER} -std=c11 -Wall -isystem ${INCLUDE} -S -o /dev/null ${SOURCE}
    RESULT_VARIABLE result ERROR_VARIABLE said)
string(REGEX MATCHALL "\n[^\n]*:[0-9]+:[0-9]+: warning: [^\n]*\\[-W[a-z-]+\\]" warnings "\n${said}")
list(TRANSFORM warnings REPLACE ".*:([0-9]+):[0-9]+: warning: .*\\[-W([a-z-]+)\\]" "\\1 \\2")

file(READ ${SOURCE} text)
string(REPLACE ";" "," text "${text}")
string(REPLACE "\n" ";" lines "${text}")
set(number 0)
foreach(line IN LISTS lines)
    math(EXPR number "${number} + 1")
    if(line MATCHES "/\\* (unused-result|nonnull) \\*/")
        list(APPEND expected "${number} ${CMAKE_MATCH_1}")
    endif()
endforeach()
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${said}")
endif()
report_surplus("warned of, and not expected: line" "${warnings}" "${expected}")
report_surplus("not warned of: line" "${expected}" "${warnings}")
