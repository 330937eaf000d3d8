# Fails where a link map names a function in C that none of the sources calls, or a variable that none sets or compares.
#
# cmake -DMAPS=... -DSOURCES=... -P <this file>
cmake_minimum_required(VERSION 3.21)
set(text)
foreach(source IN LISTS SOURCES)
    file(READ ${source} content)
    string(APPEND text "${content}")
endforeach()
foreach(map IN LISTS MAPS)
    file(STRINGS ${map} names REGEX "^    [A-Za-z0-9_]+;")
    foreach(name IN LISTS names)
        string(REGEX REPLACE "[ ;]" "" name "${name}")
        if(NOT text MATCHES "[^A-Za-z0-9_]${name}(\\(| ==? )")
            message(SEND_ERROR "${name} is not used from C")
        endif()
    endforeach()
endforeach()
