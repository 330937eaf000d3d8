# SPDX-License-Identifier: MIT
# Runs a program on the checked library. It passes as it does on the ordinary one, and no misuse is reported but those that
# it makes on purpose.
#
# cmake -DPROGRAM=<name> "-DCOMMAND=..." [-DMAY_LACK=ON] -DREPORTS=<a file to write to> -P <this file>
cmake_minimum_required(VERSION 3.21)

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/deliberate.txt expected REGEX "^${PROGRAM}\\|")
list(TRANSFORM expected REPLACE "^[^|]*\\|" "mova: ")

file(REMOVE ${REPORTS})
set(ENV{MOVA_CHECK} log)
set(ENV{MOVA_CHECK_LOG} ${REPORTS})
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(SEND_ERROR "${PROGRAM} fails (${status}):\n${said}")
endif()

file(TOUCH ${REPORTS})
file(READ ${REPORTS} reports)
file(STRINGS ${REPORTS} found REGEX "^mova: ")
list(FILTER found EXCLUDE REGEX "^mova: [0-9]+ calls checked, ")
list(REMOVE_DUPLICATES found)
list(SORT found)
list(SORT expected)
if(MAY_LACK)
    # Then it makes some of them at most.
    list(REMOVE_ITEM found ${expected})
    set(expected)
endif()
if(NOT found STREQUAL expected)
    message(SEND_ERROR "${PROGRAM}: the reports are not those that are expected, \"${expected}\":\n${reports}")
endif()
