# SPDX-License-Identifier: MIT
# Fails where a header declares a function in C that none of the sources calls, or a variable that none of them uses.
#
# cmake -DHEADERS=... -DSOURCES=... -P <this file>
cmake_minimum_required(VERSION 3.21)
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/names.cmake)

set(text)
foreach(source IN LISTS SOURCES)
    file(READ ${source} content)
    string(APPEND text "${content}")
endforeach()
foreach(header IN LISTS HEADERS)
    declared_names(${header} names variables)
    foreach(name IN LISTS names)
        set(after "\\(")
        if(name IN_LIST variables)
            set(after "[^A-Za-z0-9_(]")
        endif()
        if(NOT text MATCHES "[^A-Za-z0-9_]${name}${after}")
            message(SEND_ERROR "${name} is not used from C")
        endif()
    endforeach()
endforeach()
