# SPDX-License-Identifier: MIT
# What the scripts here share.
cmake_minimum_required(VERSION 3.21)

# Runs a command, and shows what it wrote only where it fails.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${result}): ${command}\n${output}")
    endif()
endfunction()

# configure_project(<source> <directory> <option>...)
function(configure_project source directory)
    run(${CMAKE_COMMAND} -S ${source} -B ${directory} -G ${GENERATOR} ${ARGN})
endfunction()

# build_project(<directory> [<target>...])
function(build_project directory)
    set(targets)
    if(ARGN)
        set(targets --target ${ARGN})
    endif()
    run(${CMAKE_COMMAND} --build ${directory} --parallel 2 ${targets})
endfunction()
