# With tests, benchmarks and examples off, the two libraries configure and build with a compiler for C++ and CMake
# alone.
#
# cmake -DSOURCE=... -DDIRECTORY=... -DGENERATOR=... [-DTOOLCHAIN=...] [-DCXX_COMPILER=...] -P <this file>
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

if(TOOLCHAIN)
    set(compiler -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
else()
    set(compiler -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
endif()

file(REMOVE_RECURSE ${DIRECTORY})
configure_project(${SOURCE} ${DIRECTORY} ${compiler}
    -DMOVA_BUILD_TESTS=OFF -DMOVA_BUILD_BENCH=OFF -DMOVA_BUILD_EXAMPLES=OFF
    -DCMAKE_PROJECT_INCLUDE_BEFORE=${CMAKE_CURRENT_LIST_DIR}/refuse_packages.cmake)
file(GLOB compiler_for_c ${DIRECTORY}/CMakeFiles/*/CMakeCCompiler.cmake)
if(compiler_for_c)
    message(FATAL_ERROR "a compiler for C was looked for")
endif()

build_project(${DIRECTORY})
foreach(library mova_container mova_host)
    foreach(extension so a)
        if(NOT EXISTS ${DIRECTORY}/mova/lib${library}.${extension})
            message(FATAL_ERROR "lib${library}.${extension} was not built")
        endif()
    endforeach()
endforeach()
