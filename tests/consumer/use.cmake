# SPDX-License-Identifier: MIT
# What programs do with an installed library, below `prefix`: a program in C and one in C++ are built and run, each through the
# CMake package and through pkg-config, with the shared and with the static libraries. Needs SOURCE, DIRECTORY, GENERATOR,
# PKG_CONFIG, C_COMPILER, CXX_COMPILER, C_FLAGS, CXX_FLAGS and LIBDIR.
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)
set(consumer ${CMAKE_CURRENT_LIST_DIR})
set(source_C ${consumer}/consumer.c)
set(source_CXX ${consumer}/consumer.cpp)

# Every public header is installed, and nothing besides.
function(check_headers)
    file(GLOB_RECURSE public RELATIVE ${SOURCE} ${SOURCE}/mova/*.h)
    list(FILTER public EXCLUDE REGEX "/internal/")
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

function(pkg_config_options result)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig
        ${PKG_CONFIG} ${ARGN} mova_container
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

function(use_installed)
    check_headers()
    check_paths()
    check_container_alone()
    check_typed_layer()
    foreach(language C CXX)
        foreach(suffix "" _static)
            check_cmake_package(${language} "${suffix}")
            check_pkg_config(${language} "${suffix}")
        endforeach()
    endforeach()
endfunction()
