# SPDX-License-Identifier: MIT
# Fails where a shared library exports a name that its public headers do not declare, or lacks one that they do;
# where its SONAME is another; or where it needs a library that is not in the list of those allowed.
#
# cmake -DLIBRARY=... -DSONAME=... -DHEADERS=... -DFROM_OTHERS=... -DMORE_NAMES=... -DNEEDED=... -DNM=...
#       -DREADELF=... -DSYMBOLS=... -P <this file>
#   HEADERS      the headers that declare the library's functions and variables
#   FROM_OTHERS  names declared there that others supply
#   MORE_NAMES   names exported beside those, as the linker spells them
#   SYMBOLS      the Debian package's list of what the library exports
#   NEEDED       regular expressions; each library needed must match one
cmake_minimum_required(VERSION 3.21)

include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/names.cmake)

function(output_of result)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

set(expected ${MORE_NAMES})
foreach(header IN LISTS HEADERS)
    declared_names(${header} names)
    list(REMOVE_ITEM names ${FROM_OTHERS})
    list(APPEND expected ${names})
endforeach()

output_of(symbols ${NM} -D --defined-only --format=posix ${LIBRARY})
string(REGEX MATCHALL "[^\n ]+ [A-Za-z] [^\n]*" symbols "${symbols}")
list(TRANSFORM symbols REPLACE " .*" "" OUTPUT_VARIABLE exported)
report_surplus("exported, but not declared" "${exported}" "${expected}")
report_surplus("declared, but not exported" "${expected}" "${exported}")

file(STRINGS ${SYMBOLS} packaged REGEX "^ ")
list(TRANSFORM packaged REPLACE "^ (.*)@.*" "\\1")
report_surplus("in ${SYMBOLS}, but not exported" "${packaged}" "${exported}")
report_surplus("exported, but not in ${SYMBOLS}" "${exported}" "${packaged}")

output_of(dynamic_section ${READELF} -d ${LIBRARY})
if(NOT dynamic_section MATCHES "SONAME[^\n]*\\[${SONAME}\\]")
    message(SEND_ERROR "the SONAME is not ${SONAME}:\n${dynamic_section}")
endif()
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" needed "${dynamic_section}")
foreach(entry IN LISTS needed)
    string(REGEX REPLACE ".*\\[(.*)\\]" "\\1" name "${entry}")
    list(JOIN NEEDED "|" allowed)
    if(NOT name MATCHES "^(${allowed})$")
        message(SEND_ERROR "needs ${name}")
    endif()
endforeach()
