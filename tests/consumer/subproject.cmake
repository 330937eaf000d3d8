# SPDX-License-Identifier: MIT
# As a part of another project the library builds no tests, benchmarks or examples, installs nothing, and does not mind what
# the project asks of its own sources. The project takes it from an archive or from a directory, links it, shared and static,
# and has a compiler for C alone.
#
# cmake -DSOURCE=... -DDIRECTORY=... -DGENERATOR=... -DC_COMPILER=... -DCXX_COMPILER=... -DNM=... -P <this file>
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(REMOVE_RECURSE ${DIRECTORY})
file(MAKE_DIRECTORY ${DIRECTORY})
set(archive ${DIRECTORY}/mova.tar.gz)
run(${CMAKE_COMMAND} -E chdir ${SOURCE} ${CMAKE_COMMAND} -E tar czf ${archive} CMakeLists.txt cmake mova)

# configure_with_mova(<directory> <FetchContent's word> <where the library lies> <where its part of the build is then>)
function(configure_with_mova directory fetch from part)
    configure_project(${CMAKE_CURRENT_LIST_DIR}/subproject ${directory} -DFETCH=${fetch} -DMOVA=${from}
        -DCONSUMER_SOURCE=${CMAKE_CURRENT_LIST_DIR} -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
        "-DCMAKE_C_FLAGS=-Werror -Wall -Wextra -Wmissing-declarations -Wmissing-prototypes"
        "-DCMAKE_CXX_FLAGS=-fno-exceptions -fno-rtti -Werror -Wall -Wextra -Wmissing-declarations -Wold-style-cast"
        -DCMAKE_UNITY_BUILD=ON -DCMAKE_BUILD_TYPE=Release)
    execute_process(COMMAND ${CMAKE_CTEST_COMMAND} -N WORKING_DIRECTORY ${directory} OUTPUT_VARIABLE tests
        COMMAND_ERROR_IS_FATAL ANY)
    if(NOT tests MATCHES "Total Tests: 2\n")
        message(FATAL_ERROR "tests beside the project's own:\n${tests}")
    endif()
    if(NOT EXISTS ${directory}/${part}/mova)
        message(FATAL_ERROR "the library is not part of the build")
    endif()
    foreach(room tests bench examples googletest)
        if(EXISTS ${directory}/${part}/${room})
            message(FATAL_ERROR "${room} is part of the build")
        endif()
    endforeach()
endfunction()

set(build ${DIRECTORY}/from_archive)
configure_with_mova(${DIRECTORY}/from_directory "" ${SOURCE} mova)
configure_with_mova(${DIRECTORY}/from_fetched_directory SOURCE_DIR ${SOURCE} _deps/mova-build)
configure_with_mova(${build} URL file://${archive} _deps/mova-build)

build_project(${build})
run(${build}/consumer)
run(${build}/consumer_static)

run(${CMAKE_COMMAND} --install ${build} --prefix ${DIRECTORY}/installed)
file(GLOB_RECURSE installed RELATIVE ${DIRECTORY}/installed ${DIRECTORY}/installed/*)
if(NOT installed STREQUAL "bin/consumer_static")
    message(FATAL_ERROR "installed beside the project's own: ${installed}")
endif()

execute_process(COMMAND ${NM} -D --defined-only ${build}/libplugin.so OUTPUT_VARIABLE exported
    COMMAND_ERROR_IS_FATAL ANY)
if(exported MATCHES "(GL|MM|EX)_[a-z_]+|mova" OR NOT exported MATCHES " main\n")
    message(FATAL_ERROR "the plug-in exports:\n${exported}")
endif()
