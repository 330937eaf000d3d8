# SPDX-License-Identifier: MIT
# Fails where what people read differs from the table of families: the umbrella headers, the link maps, the tables of
# docs/choosing.md and of docs/cxx.md.
#
# cmake -DROOT=... -P <this file>
cmake_minimum_required(VERSION 3.21)
include(${ROOT}/cmake/families.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/names.cmake)

# names_in(<result> <file> <regular expression> <replacement>): for each line that the expression matches.
function(names_in result file expression replacement)
    file(STRINGS ${ROOT}/${file} lines REGEX "${expression}")
    list(TRANSFORM lines REPLACE "${expression}.*" "${replacement}")
    set(${result} ${lines} PARENT_SCOPE)
endfunction()

# expect_same(<file> <found> <expected>)
function(expect_same file found expected)
    report_surplus("${file} has, and cmake/families.cmake has not" "${found}" "${expected}")
    report_surplus("${file} lacks" "${expected}" "${found}")
endfunction()

families(names)
foreach(name IN LISTS names)
    set(room ${${name}_room})
    if(NOT EXISTS ${ROOT}/mova/${room}/${name}.h)
        message(SEND_ERROR "mova/${room}/${name}.h is not there")
    endif()
    if(room STREQUAL host)
        list(APPEND host_prefixes ${${name}_prefixes})
    else()
        list(APPEND container_prefixes ${${name}_prefixes})
        list(GET ${name}_prefixes 0 prefix)
        list(APPEND headers mova/${room}/${name}.h)
        if(NOT EXISTS ${ROOT}/examples/${room}/${name}.c AND NOT EXISTS ${ROOT}/examples/${room}/${name}.cpp)
            message(SEND_ERROR "examples/${room} has no program for ${name}")
        endif()
        list(APPEND documented_prefixes ${prefix})
        list(APPEND documented "${prefix} mova/${room}/${name}.h")
    endif()
endforeach()

list(APPEND container_prefixes mova_version)

names_in(found mova/container.h "^#include <(.*)>" "\\1")
expect_same(mova/container.h "${found}" "${headers}")

foreach(library container host/host)
    cmake_path(GET library FILENAME name)
    names_in(found mova/${library}.map "^    ([A-Za-z_]+)\\*" "\\1")
    expect_same(mova/${library}.map "${found}" "${${name}_prefixes}")
endforeach()

names_in(found docs/choosing.md "^\\|.*`([A-Za-z_]+_)`.*\\| `(mova/[a-z_/]+\\.h)`" "\\1 \\2")
expect_same(docs/choosing.md "${found}" "${documented}")

names_in(found docs/choosing.md "^\\| `([A-Za-z_]+_)`" "\\1")
expect_same(docs/choosing.md "${found}" "${documented_prefixes}")

# A class of the typed layer may stand over two families, or over a service of the host.
names_in(lines docs/cxx.md "^\\| `[^|]*\\| (`[^|]*`) \\|" "\\1")
string(REGEX MATCHALL "[A-Za-z_]+_" found "${lines}")
list(REMOVE_ITEM found ${host_prefixes})
list(REMOVE_DUPLICATES found)
expect_same(docs/cxx.md "${found}" "${documented_prefixes}")

# Every family has a typed header, and each of those is mova/cxx.h's or another's.
names_in(included mova/cxx.h "^#include <(.*)>" "\\1")
file(GLOB typed RELATIVE ${ROOT} ${ROOT}/mova/cxx/*.h)
foreach(header IN LISTS typed)
    names_in(found ${header} "^#include <(mova/.*)>" "\\1")
    list(APPEND included ${found})
endforeach()
report_surplus("mova/cxx.h and its headers do not include" "${headers};${typed}" "${included}")
