# SPDX-License-Identifier: MIT
# Fails where a document links to a file that is not there.
#
# cmake -DROOT=... -P <this file>
cmake_minimum_required(VERSION 3.21)
file(GLOB documents ${ROOT}/*.md ${ROOT}/docs/*.md)
foreach(document IN LISTS documents)
    cmake_path(GET document PARENT_PATH folder)
    file(READ ${document} text)
    # Brackets and semicolons would join the elements of a list.
    string(REPLACE "](" "<link>" text "${text}")
    string(REGEX REPLACE "[][;]" "" text "${text}")
    # Of a lambda with parameters the like stands in code: a target has no blanks.
    string(REGEX MATCHALL "<link>[^)#: ]+[)#]" links "${text}")
    foreach(link IN LISTS links)
        string(REGEX REPLACE "<link>|[)#]$" "" target "${link}")
        if(NOT EXISTS ${folder}/${target})
            message(SEND_ERROR "${document}: ${target} is not there")
        endif()
    endforeach()
endforeach()
