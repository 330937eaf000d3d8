# SPDX-License-Identifier: MIT
# Calls the script with what it must refuse, and on machines that lack something, and compares what it says.
#
# cmake -DDEV=... -DDIRECTORY=... -P <this file>
cmake_minimum_required(VERSION 3.21)

# expect(<exit code> <regular expression for the whole of what it says> [<variable=value>...] ARGUMENTS <argument>...)
function(expect code expression)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "ARGUMENTS")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ${arg_UNPARSED_ARGUMENTS} ${DEV} ${arg_ARGUMENTS}
        RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(NOT result EQUAL code OR NOT said MATCHES "^${expression}$")
        list(JOIN arg_ARGUMENTS " " arguments)
        message(SEND_ERROR "./dev ${arguments} ended with ${result} and said:\n${said}")
    endif()
endfunction()

foreach(command demo test check package bench format setup)
    expect(0 "  ${command} .*" ARGUMENTS ${command} --help)
endforeach()
expect(0 ".*usage: atlas FILE.*--width N.*" ARGUMENTS demo --help)
expect(0 "usage: ./dev COMMAND.*" ARGUMENTS --help)
expect(1 "dev: no such command: tset [^\n]*\n" ARGUMENTS tset)
expect(1 "dev: check takes no arguments\n" ARGUMENTS check everything)
expect(1 "dev: no such room: attic [^\n]*\n" ARGUMENTS test attic)

# The map's options are looked at before anything is built.
expect(1 "dev: demo has no option --widht [^\n]*\n" ARGUMENTS demo --widht 64)
expect(1 "dev: demo has no option countries.json [^\n]*\n" ARGUMENTS demo countries.json)
expect(1 "dev: --select needs a value [^\n]*\n" ARGUMENTS demo --print-tree --select)
expect(1 "dev: --width takes a whole number from 16 to 32768, not 15\n" ARGUMENTS demo --width 15)
expect(1 "dev: --width takes a whole number from 16 to 32768, not \n" ARGUMENTS demo --width=)
expect(1 "dev: --cache-budget takes a whole number from 32768 to 536870912, not 1M\n" ARGUMENTS demo --cache-budget=1M)

expect(1 "dev: bench --against needs a commit\n" ARGUMENTS bench --against)
expect(1 "dev: bench --against: there is no commit yesterday\n" ARGUMENTS bench --against yesterday)

# A place that nobody can write to.
expect(1 "dev: /proc/nowhere cannot be written to: set MOVA_BUILD_DIR to a directory of your own\n"
       MOVA_BUILD_DIR=/proc/nowhere ARGUMENTS demo)

# A machine without apt-get, and with nothing but the plainest tools.
set(bare ${DIRECTORY}/bare)
file(REMOVE_RECURSE ${bare})
file(MAKE_DIRECTORY ${bare})
foreach(tool bash echo env dirname realpath nproc grep sed sort xargs id mkdir cat cut tr tail find)
    find_program(path_of_${tool} ${tool} REQUIRED)
    file(CREATE_LINK ${path_of_${tool}} ${bare}/${tool} SYMBOLIC)
endforeach()
expect(1 "dev: missing, by Debian's names: clang-format\; there is no apt-get here to install them with\n"
       PATH=${bare} ARGUMENTS format)
expect(1 "dev: missing, by Debian's names: cmake g.. libpng-dev ninja-build nlohmann-json3-dev\; [^\n]*\n"
       PATH=${bare} ARGUMENTS demo)

# One tool more, from wherever: then there is nothing to say.
file(WRITE ${bare}/clang-format "#!${bare}/bash\n")
file(CHMOD ${bare}/clang-format PERMISSIONS OWNER_READ OWNER_EXECUTE)
expect(0 "" PATH=${bare} ARGUMENTS format)
