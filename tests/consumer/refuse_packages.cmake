# SPDX-License-Identifier: MIT
# Put before a project: refuses to look for any package but the threads, which come with the compiler.
macro(find_package name)
    if(NOT "${name}" STREQUAL Threads)
        message(FATAL_ERROR "the package ${name} was looked for")
    endif()
    _find_package(${name} ${ARGN})
endmacro()
