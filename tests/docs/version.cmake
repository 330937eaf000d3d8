# SPDX-License-Identifier: MIT
# Fails where a file that bears the version itself differs from mova/version.h.
#
# cmake -DROOT=... -DVERSION=... -P <this file>
cmake_minimum_required(VERSION 3.21)

# expect_first(<file> <regular expression with one group>): the first match is the version.
function(expect_first file expression)
    file(READ ${ROOT}/${file} text)
    if(NOT text MATCHES "${expression}" OR NOT CMAKE_MATCH_1 STREQUAL VERSION)
        message(SEND_ERROR "${file} says ${CMAKE_MATCH_1} where mova/version.h says ${VERSION}")
    endif()
endfunction()

expect_first(CHANGELOG.md "# Changes\n\n## ([0-9.]+)")
expect_first(debian/changelog "^mova \\(([0-9.]+)\\)")
expect_first(packaging/mova.wrap "directory = mova-([0-9.]+)\n")
expect_first(packaging/mova.wrap "source_filename = mova-([0-9.]+)\\.tar")

# The packages with the shared libraries bear the number that the libraries' names end in.
string(REGEX MATCH "^[0-9]+" major ${VERSION})
file(GLOB debian RELATIVE ${ROOT} ${ROOT}/debian/*)
foreach(file IN LISTS debian ITEMS docs/install.md tests/consumer/packages.cmake)
    if(file STREQUAL debian/changelog OR IS_DIRECTORY ${ROOT}/${file})
        continue()
    endif()
    file(READ ${ROOT}/${file} text)
    string(REGEX MATCHALL "libmova[-_](container|host)([-_]system)?(\\.so\\.)?[0-9]+" names "${file} ${text}")
    foreach(name IN LISTS names)
        if(NOT name MATCHES "[a-z.]${major}$")
            message(SEND_ERROR "${file} says ${name}, where mova/version.h says ${VERSION}")
        endif()
    endforeach()
endforeach()
