# SPDX-License-Identifier: MIT
# The table of docs/checked.md says which kinds of misuse are found in which family: the cells of tests/checked are those.
#
# cmake -DROOT=... -P <this file>
cmake_minimum_required(VERSION 3.21)
include(${ROOT}/cmake/families.cmake)
include(${ROOT}/cmake/names.cmake)

file(STRINGS ${ROOT}/docs/checked.md rows REGEX "^\\| [0-9]+\\. ")
foreach(row IN LISTS rows)
    string(REGEX MATCH "^\\| ([0-9]+)\\. [^|]*\\| ([^|]*) \\|$" whole "${row}")
    set(kind ${CMAKE_MATCH_1})
    string(REPLACE " " ";" prefixes "${CMAKE_MATCH_2}")
    foreach(prefix IN LISTS prefixes)
        list(APPEND promised "${kind} ${prefix}")
    endforeach()
endforeach()

families(all)
families(names WITH checked)
foreach(name IN LISTS names ITEMS memory memory_blocks)
    list(GET ${name}_prefixes 0 prefix)
    string(REGEX REPLACE "_$" "" prefix ${prefix})
    file(STRINGS ${ROOT}/tests/checked/${name}.c cells REGEX "^    {\"[^\"]*\", [0-9]+,")
    foreach(cell IN LISTS cells)
        string(REGEX MATCH ", ([0-9]+)," whole "${cell}")
        list(APPEND found "${CMAKE_MATCH_1} ${prefix}")
    endforeach()
endforeach()
# There each cell's name begins with its family's prefix.
file(STRINGS ${ROOT}/tests/checked/threads.c cells REGEX "^    {\"[^\"]*\", [0-9]+,")
foreach(cell IN LISTS cells)
    string(REGEX MATCH "\"([^ ]+) [^\"]*\", ([0-9]+)," whole "${cell}")
    list(APPEND found "${CMAKE_MATCH_2} ${CMAKE_MATCH_1}")
endforeach()
list(REMOVE_DUPLICATES found)
report_surplus("docs/checked.md says, and no cell shows" "${promised}" "${found}")
report_surplus("docs/checked.md does not say" "${found}" "${promised}")
