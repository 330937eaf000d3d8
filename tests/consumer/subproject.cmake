# As a part of another project the library builds no tests, benchmarks or examples, and the project links it.
#
# cmake -DSOURCE=... -DDIRECTORY=... -DGENERATOR=... -DC_COMPILER=... -DCXX_COMPILER=... -P <this file>
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(REMOVE_RECURSE ${DIRECTORY})
configure_project(${CMAKE_CURRENT_LIST_DIR}/subproject ${DIRECTORY} -DMOVA_SOURCE=${SOURCE}
    -DCONSUMER_SOURCE=${CMAKE_CURRENT_LIST_DIR}/consumer.c
    -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})

execute_process(COMMAND ${CMAKE_CTEST_COMMAND} -N WORKING_DIRECTORY ${DIRECTORY} OUTPUT_VARIABLE tests
    COMMAND_ERROR_IS_FATAL ANY)
if(NOT tests MATCHES "Total Tests: 1\n")
    message(FATAL_ERROR "tests beside the project's own:\n${tests}")
endif()
foreach(room tests bench examples googletest)
    if(EXISTS ${DIRECTORY}/mova/${room})
        message(FATAL_ERROR "${room} is part of the build")
    endif()
endforeach()

build_project(${DIRECTORY})
run(${DIRECTORY}/consumer)
