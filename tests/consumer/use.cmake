# SPDX-License-Identifier: MIT
# What programs do with an installed library, below `prefix`: a program in C and one in C++ are built and run, each through the
# CMake package and through pkg-config, with the shared and with the static libraries; a program is run under mova-check.
# Needs SOURCE, DIRECTORY, GENERATOR, PKG_CONFIG, C_COMPILER, CXX_COMPILER, C_FLAGS, CXX_FLAGS and LIBDIR.
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)
set(consumer ${CMAKE_CURRENT_LIST_DIR})
set(source_C ${consumer}/consumer.c)
set(source_CXX ${consumer}/consumer.cpp)

# Every public header is installed, and nothing besides.
function(check_headers)
    file(GLOB_RECURSE public RELATIVE ${SOURCE} ${SOURCE}/mova/*.h)
    list(FILTER public EXCLUDE REGEX "/internal/|^mova/checked/")
    list(APPEND public mova/checked/checked.h)
    list(SORT public)
    file(GLOB_RECURSE installed RELATIVE ${prefix}/include ${prefix}/include/*)
    if(NOT public STREQUAL installed)
        message(FATAL_ERROR "public headers: ${public}\ninstalled: ${installed}")
    endif()
endfunction()

# No installed text names the place where it was installed first, nor the one where it was built.
function(check_paths)
    file(GLOB_RECURSE texts ${prefix}/*.cmake ${prefix}/*.pc)
    foreach(text IN LISTS texts)
        file(READ ${text} content)
        foreach(path ${DIRECTORY} ${BUILD} ${SOURCE})
            string(FIND "${content}" ${path} position)
            if(NOT position EQUAL -1)
                message(FATAL_ERROR "${text} names ${path}")
            endif()
        endforeach()
    endforeach()
endfunction()

function(check_cmake_package language suffix)
    set(build ${DIRECTORY}/cmake_${language}${suffix})
    configure_project(${consumer}/package ${build} -DCMAKE_PREFIX_PATH=${prefix} -DCONSUMER_LANGUAGE=${language}
        -DCONSUMER_SOURCE=${source_${language}} -DCONSUMER_SUFFIX=${suffix}
        -DCMAKE_${language}_COMPILER=${${language}_COMPILER} -DCMAKE_${language}_FLAGS=${${language}_FLAGS})
    build_project(${build})
    run(${build}/consumer)
endfunction()

# pkg_config_options(<result> <option>...): of `package`.
set(package mova_container)
function(pkg_config_options result)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig
        ${PKG_CONFIG} ${ARGN} ${package}
        OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(options UNIX_COMMAND "${options}")
    set(${result} ${options} PARENT_SCOPE)
endfunction()

function(check_pkg_config language suffix)
    set(program ${DIRECTORY}/pkg_config_${language}${suffix})
    set(mode)
    set(link -Wl,-rpath,${prefix}/${LIBDIR})
    if(suffix)
        set(mode --static)
        set(link -static)
    endif()
    pkg_config_options(cflags --cflags)
    pkg_config_options(libs ${mode} --libs)
    separate_arguments(flags UNIX_COMMAND "${${language}_FLAGS}")
    run(${${language}_COMPILER} ${flags} ${cflags} ${source_${language}} ${link} ${libs} -o ${program})
    run(${program})
endfunction()

# A program that knows of the containers alone is linked with their library alone, which finds its default host.
function(check_container_alone)
    separate_arguments(flags UNIX_COMMAND "${C_FLAGS}")
    set(program ${DIRECTORY}/container_alone)
    run(${C_COMPILER} ${flags} -I${prefix}/include ${consumer}/container_alone.c -o ${program}
        -L${prefix}/${LIBDIR} -Wl,-rpath,${prefix}/${LIBDIR} -lmova_container)
    run(${program})
endfunction()

# The typed layer has no warning for a strict program, and minds no missing exceptions.
function(check_typed_layer)
    pkg_config_options(options --cflags --libs)
    separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS}")
    foreach(exceptions -fexceptions -fno-exceptions)
        set(program ${DIRECTORY}/typed${exceptions})
        run(${CXX_COMPILER} ${flags} -std=c++20 -O2 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Werror
            ${exceptions} ${consumer}/typed.cpp -Wl,-rpath,${prefix}/${LIBDIR} ${options} -o ${program})
        run(${program})
    endforeach()
endfunction()

# check_says(<first lines> <text> <command>...): what mova-check says of it, on stderr.
function(check_says expected)
    execute_process(COMMAND ${prefix}/bin/mova-check ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE said)
    if(NOT said MATCHES "^${expected}")
        message(FATAL_ERROR "mova-check ${ARGN} says\n${said}in place of\n${expected}")
    endif()
endfunction()

# A program of the examples, built against the ordinary library, as it is and with a position removed twice.
function(check_mova_check)
    unset(ENV{MOVA_CHECK})
    unset(ENV{MOVA_CHECK_LOG})
    file(READ ${SOURCE}/examples/lists/generic_list.c right)
    set(removal "GL_remove_item(list, position)")
    string(REPLACE "${removal}" "${removal}, ${removal}" wrong "${right}")
    string(FIND "${wrong}" "${removal}" before)
    string(SUBSTRING "${wrong}" 0 ${before} before)
    string(REGEX MATCHALL "\n" lines "${before}")
    list(LENGTH lines line)
    math(EXPR line "${line} + 1")

    pkg_config_options(options --cflags --libs)
    separate_arguments(flags UNIX_COMMAND "${C_FLAGS}")
    foreach(program right wrong)
        file(WRITE ${DIRECTORY}/${program}.c "${${program}}")
        run(${C_COMPILER} ${flags} -g ${DIRECTORY}/${program}.c -Wl,-rpath,${prefix}/${LIBDIR} ${options}
            -o ${DIRECTORY}/${program})
    endforeach()
    run(${DIRECTORY}/right)
    check_says("mova: [0-9]+ calls checked, 0 misuses. 0 containers and 0 blocks left\n$" ${DIRECTORY}/right)
    check_says("mova: GL_remove_item: the position was removed\n  in         main +wrong.c:${line}\n" ${DIRECTORY}/wrong)

    # What it cannot check it says, and what it is asked wrongly.
    pkg_config_options(options --cflags --static --libs)
    run(${C_COMPILER} ${flags} ${DIRECTORY}/right.c -static ${options} -o ${DIRECTORY}/static)
    check_says("mova-check: [^\n]*/static is a static program, which cannot be checked: link it with" ${DIRECTORY}/static)
    check_says("mova-check: [^\n]* is not linked with the libraries of mova: only what it loads or starts is" ls)
    check_says("mova-check: there is no program no-such-program\n$" no-such-program)
    check_says("mova-check: there is no program [^\n]*/nothing\n$" ${DIRECTORY}/nothing)
    check_says("mova-check: [^\n]* is no program that can be run\n$" ${DIRECTORY}/right.c)
    check_says("mova-check: there is no option --what. mova-check --help says how it is used\n$" --what)
    check_says("usage: mova-check PROGRAM ARGUMENT" "")
    file(WRITE ${DIRECTORY}/script "#!/bin/sh\nexec ${DIRECTORY}/right\n")
    file(CHMOD ${DIRECTORY}/script PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    check_says("mova: [0-9]+ calls checked, 0 misuses" ${DIRECTORY}/script)
    execute_process(COMMAND ${prefix}/bin/mova-check --help OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
    if(NOT said MATCHES "^usage: mova-check PROGRAM ARGUMENT")
        message(FATAL_ERROR "mova-check --help says\n${said}")
    endif()
endfunction()

# Linked with the checked library, a program needs no mova-check.
function(check_linked_with_the_checked_library)
    set(build ${DIRECTORY}/cmake_checked)
    configure_project(${consumer}/package ${build} -DCMAKE_PREFIX_PATH=${prefix} -DCONSUMER_LANGUAGE=C
        -DCONSUMER_SOURCE=${DIRECTORY}/wrong.c -DCONSUMER_SUFFIX=_checked -DCMAKE_C_COMPILER=${C_COMPILER}
        -DCMAKE_C_FLAGS=${C_FLAGS})
    build_project(${build})
    separate_arguments(flags UNIX_COMMAND "${C_FLAGS}")
    set(package mova_container_checked)
    pkg_config_options(options --cflags --libs)
    set(program ${DIRECTORY}/pkg_config_checked)
    run(${C_COMPILER} ${flags} ${DIRECTORY}/wrong.c -Wl,-rpath,${prefix}/${LIBDIR} ${options} -o ${program})
    foreach(program ${build}/consumer ${program})
        execute_process(COMMAND ${program} ERROR_VARIABLE said RESULT_VARIABLE status)
        if(status EQUAL 0 OR NOT said MATCHES "^mova: GL_remove_item: the position was removed\n")
            message(FATAL_ERROR "${program} says (${status})\n${said}")
        endif()
    endforeach()
endfunction()

function(use_installed)
    check_headers()
    check_paths()
    check_container_alone()
    check_typed_layer()
    check_mova_check()
    check_linked_with_the_checked_library()
    foreach(language C CXX)
        foreach(suffix "" _static)
            check_cmake_package(${language} "${suffix}")
            check_pkg_config(${language} "${suffix}")
        endforeach()
    endforeach()
endfunction()
