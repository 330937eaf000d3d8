# SPDX-License-Identifier: MIT
# Writes the checked functions of a family, all of which are alike (mova/checked/internal/call.h says how), and the list by
# which the ordinary objects' functions get their other names. Both follow from the public header.
#
# cmake -DHEADER=mova/<room>/<name>.h -DROWS=mova/checked/<name>.h -DSOURCE=<header's path> -DOUTPUT=... -DNAMES=... -P <this file>
cmake_minimum_required(VERSION 3.21)

include(${CMAKE_CURRENT_LIST_DIR}/names.cmake)

declared_names(${SOURCE} names)
file(READ ${SOURCE} text)
string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
string(REPLACE ";" "\\;" text "${text}")

set(functions)
set(renamed)
foreach(name IN LISTS names)
    # Variables are the ordinary ones.
    if(NOT text MATCHES "\n([A-Za-z][A-Za-z0-9_ ]*[ *])${name}\\(([^()]*)\\)")
        continue()
    endif()
    set(result "${CMAKE_MATCH_1}")
    set(parameters "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "[ \n]+" " " parameters "${parameters}")
    set(arguments)
    if(NOT parameters STREQUAL "void")
        string(REPLACE "," ";" each "${parameters}")
        foreach(parameter IN LISTS each)
            string(REGEX MATCH "[A-Za-z0-9_]+$" argument "${parameter}")
            string(APPEND arguments ", ${argument}")
        endforeach()
    endif()
    # Under its own name the header may have given it a body already. (The row is a constant of this file: the compiler sees
    # what is in it.)
    string(APPEND functions "
${result}mova_plain_${name}(${parameters});
${result}mova_checked_${name}(${parameters}) __asm__(\"${name}\");
static constexpr auto row_of_${name} = mova::checked::rows::${name};
__attribute__((visibility(\"default\"))) ${result}mova_checked_${name}(${parameters})
{
    mova::checked::call made(\"${name}\", __builtin_return_address(0));
    return mova::checked::make<row_of_${name}>(made, mova_plain_${name}${arguments});
}
")
    string(APPEND renamed "${name} mova_plain_${name}\n")
endforeach()

file(WRITE ${OUTPUT} "#include <${ROWS}>\n\n#include <${HEADER}>\n\nextern \"C\" {\n${functions}\n}\n")
file(WRITE ${NAMES} "${renamed}")
