# SPDX-License-Identifier: MIT
# Fails where the program does not end by SIGABRT with the error's text on stderr. The program
# does not look to this itself, in a child process: not every emulator can end one by a signal.
#
# cmake "-DPROGRAM=..." -P <this file>
cmake_minimum_required(VERSION 3.21)
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT result MATCHES "abort")
    message(SEND_ERROR "ended with: ${result}")
endif()
string(FIND "${errors}" "gentree, line 481: a precondition was broken (4297). GT_remove_item: the comparisons"
    position)
if(position EQUAL -1)
    message(SEND_ERROR "wrote to stderr:\n${errors}")
endif()
