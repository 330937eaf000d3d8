# SPDX-License-Identifier: MIT
# Calls the script with what it must refuse, and on machines that lack something, and compares what it says.
#
# cmake -DSOURCE=... -P <this file>
cmake_minimum_required(VERSION 3.21)
set(DEV ${SOURCE}/dev)

# expect(<exit code> <regular expression for the whole of what it says> [<variable=value>...] [<command>...] ARGUMENTS
# <argument>...)
function(expect code expression)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "ARGUMENTS")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ${arg_UNPARSED_ARGUMENTS} ${DEV} ${arg_ARGUMENTS}
        RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(NOT result EQUAL code OR NOT said MATCHES "^${expression}$")
        list(JOIN arg_ARGUMENTS " " arguments)
        message(SEND_ERROR "./dev ${arguments} ended with ${result} and said:\n${said}")
    endif()
endfunction()

foreach(command demo test check coverage mutate trace fuzz abi proof docs first-minutes package bench format setup)
    expect(0 "  ${command} .*" ARGUMENTS ${command} --help)
endforeach()
expect(0 ".*usage: atlas FILE.*--width N.*" ARGUMENTS demo --help)
expect(0 "usage: ./dev COMMAND.*" ARGUMENTS --help)
expect(1 "dev: no such command: tset [^\n]*\n" ARGUMENTS tset)
expect(1 "dev: check takes no arguments\n" ARGUMENTS check everything)
foreach(room attic fuzz . "arrays lists")
    expect(1 "dev: no such room: ${room} [(]there are: arrays c_api [^\n]*\n" ARGUMENTS test "${room}")
endforeach()

expect(1 "dev: there are no figures yet: they are those of ./dev check\n" MOVA_BUILD_DIR=/proc/nowhere ARGUMENTS proof)

# The map's options are looked at before anything is built.
expect(1 "dev: demo has no option --widht [^\n]*\n" ARGUMENTS demo --widht 64)
expect(1 "dev: demo has no option countries.json [^\n]*\n" ARGUMENTS demo countries.json)
expect(1 "dev: --select needs a value [^\n]*\n" ARGUMENTS demo --print-tree --select)
expect(1 "dev: --width takes a whole number from 16 to 32768, not 15\n" ARGUMENTS demo --width 15)
expect(1 "dev: --width takes a whole number from 16 to 32768, not \n" ARGUMENTS demo --width=)
expect(1 "dev: --cache-budget takes a whole number from 32768 to 536870912, not 1M\n" ARGUMENTS demo --cache-budget=1M)

expect(1 "dev: fuzz takes a family and for how many seconds\n" ARGUMENTS fuzz element_list)
foreach(family errors lists .)
    expect(1 "dev: no such family: ${family} [(]there are: block_array [^\n]* map[)]\n" ARGUMENTS fuzz ${family} 60)
endforeach()
foreach(seconds 0 1m -60 "1 2")
    expect(1 "dev: SECONDS takes a whole number from 1 to 1000000, not ${seconds}\n" ARGUMENTS fuzz map "${seconds}")
endforeach()

expect(1 "dev: bench --against needs a commit\n" ARGUMENTS bench --against)
expect(1 "dev: bench --against: there is no commit yesterday\n" ARGUMENTS bench --against yesterday)
foreach(word L99 1e6 --slow --against .)
    expect(1 "dev: bench has no row or option ${word} [^\n]*\n" ARGUMENTS bench L1 ${word})
endforeach()

# A place that nobody can write to.
expect(1 "dev: /proc/nowhere cannot be written to: set MOVA_BUILD_DIR to a directory of your own\n"
       MOVA_BUILD_DIR=/proc/nowhere ARGUMENTS demo)

# A machine without apt-get, and with nothing but the plainest tools. Others have to find their way to it.
execute_process(COMMAND mktemp -d OUTPUT_VARIABLE place OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(CHMOD ${place} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE WORLD_READ WORLD_EXECUTE)
set(bare ${place}/bare)
file(MAKE_DIRECTORY ${bare})
foreach(tool bash echo env dirname realpath nproc grep sed sort xargs id mkdir cat cut tr tail find tee wc cp chmod)
    find_program(path_of_${tool} ${tool} REQUIRED)
    file(CREATE_LINK ${path_of_${tool}} ${bare}/${tool} SYMBOLIC)
endforeach()
expect(1 "dev: missing, by Debian's names: clang-format\; there is no apt-get here to install them with\n"
       PATH=${bare} ARGUMENTS format)
set(packages "cmake g.. libhiredis-dev libpng-dev libsqlite3-dev ninja-build nlohmann-json3-dev zlib1g-dev")
expect(1 "dev: missing, by Debian's names: ${packages}\; [^\n]*\n"
       PATH=${bare} ARGUMENTS demo)

# The script may be called by a link.
file(CREATE_LINK ${DEV} ${place}/link SYMBOLIC)
execute_process(COMMAND ${place}/link test attic ERROR_VARIABLE said)
if(NOT said MATCHES "^dev: no such room: attic [(]there are: arrays c_api ")
    message(SEND_ERROR "by a link ./dev said:\n${said}")
endif()

# tool(<name> [<script>]): one tool more, from wherever.
function(tool name)
    list(POP_BACK ARGV script)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/tools/${script} ${bare}/${name} COPYONLY)
endfunction()

# Then there is nothing to say.
tool(clang-format nothing)
expect(0 "" PATH=${bare} ARGUMENTS format)
file(REMOVE ${bare}/clang-format)

# A lock of apt-get's is waited for.
foreach(script apt-get sleep sudo nothing)
    tool(${script})
endforeach()
set(here MOVA_BUILD_DIR=${place}/build PATH=${bare})
expect(0 "install  1 packages +ok  [0-9]+ s\n" ${here} ARGUMENTS format)
file(STRINGS ${bare}/asked asked)
set(options "-qq -o DPkg::Lock::Timeout=600")
if(NOT asked STREQUAL "apt-get ${options} update;apt-get ${options} update;apt-get ${options} install -y --no-install-recommends clang-format"
   OR NOT EXISTS ${bare}/slept)
    message(SEND_ERROR "apt-get was asked: ${asked}")
endif()
file(REMOVE ${bare}/apt-get ${bare}/sleep)

# Tools from wherever serve; and a terminal is told how far a long build is.
tool(cmake)
foreach(name c++ g++ ninja)
    tool(${name} nothing)
endforeach()
find_program(path_of_sleep sleep REQUIRED)
file(CREATE_LINK ${path_of_sleep} ${bare}/sleep SYMBOLIC)
expect(0 "build    the map program +ok  [0-9]+ s\ndrawn by ${place}/build/release/examples/atlas/atlas\n" ${here} ARGUMENTS demo)
find_program(MOVA_SCRIPT script REQUIRED)
execute_process(COMMAND ${CMAKE_COMMAND} -E env ${here} SHELL=${bare}/bash ${MOVA_SCRIPT} -qec "${DEV} demo" /dev/null
    OUTPUT_VARIABLE said)
if(NOT said MATCHES "^build    the map program +\r+build    the map program +3/7 .*\r+build    the map program +[^ ]*ok  [0-9]+ s\r?\ndrawn by ")
    message(SEND_ERROR "on a terminal ./dev demo said:\n${said}")
endif()

# A source that is another's, or that only may be read.
file(COPY ${SOURCE}/dev DESTINATION ${place}/source)
file(COPY ${SOURCE}/examples/atlas/main.cpp DESTINATION ${place}/source/examples/atlas)
file(MAKE_DIRECTORY ${place}/mine)
file(CHMOD ${place}/mine PERMISSIONS OWNER_WRITE OWNER_EXECUTE WORLD_WRITE WORLD_EXECUTE)
file(CHMOD_RECURSE ${place}/source PERMISSIONS OWNER_READ OWNER_EXECUTE WORLD_READ WORLD_EXECUTE)
set(DEV ${place}/source/dev)
execute_process(COMMAND id -u OUTPUT_VARIABLE user OUTPUT_STRIP_TRAILING_WHITESPACE)
if(user EQUAL 0)
    find_program(MOVA_SETPRIV setpriv REQUIRED)
    set(as_another ${MOVA_SETPRIV} --reuid=65534 --regid=65534 --clear-groups)
endif()
expect(1 "dev: ${place}/source/build cannot be written to: set MOVA_BUILD_DIR to a directory of your own\n"
       PATH=${bare} ${as_another} ARGUMENTS demo)
expect(0 "build    the map program +ok  [0-9]+ s\ndrawn by ${place}/mine/build/release/examples/atlas/atlas\n"
       PATH=${bare} MOVA_BUILD_DIR=${place}/mine/build ${as_another} ARGUMENTS demo)

file(CHMOD_RECURSE ${place}/source PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
file(REMOVE_RECURSE ${place})
