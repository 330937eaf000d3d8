# SPDX-License-Identifier: MIT
# Fails where the program does not own a copy of cc_debug.
#
# cmake -DREADELF=... -DPROGRAM=... -P <this file>
cmake_minimum_required(VERSION 3.21)
execute_process(COMMAND ${READELF} -rW ${PROGRAM} OUTPUT_VARIABLE relocations COMMAND_ERROR_IS_FATAL ANY)
if(NOT relocations MATCHES "_COPY [^\n]*cc_debug")
    message(SEND_ERROR "no copy of cc_debug:\n${relocations}")
endif()
