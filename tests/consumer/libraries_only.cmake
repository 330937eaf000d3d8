# SPDX-License-Identifier: MIT
# With tests, benchmarks and examples off, the libraries configure and build with a compiler for C++ and CMake
# alone. With PKG_CONFIG it looks at what absolute directories lead to.
#
# cmake -DSOURCE=... -DDIRECTORY=... -DGENERATOR=... [-DTOOLCHAIN=...] [-DCXX_COMPILER=...] [-DPKG_CONFIG=...]
#       -P <this file>
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

if(TOOLCHAIN)
    set(compiler -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
else()
    set(compiler -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
endif()

file(REMOVE_RECURSE ${DIRECTORY})
set(options ${compiler} -DMOVA_BUILD_TESTS=OFF -DMOVA_BUILD_BENCH=OFF -DMOVA_BUILD_EXAMPLES=OFF)
configure_project(${SOURCE} ${DIRECTORY} ${options}
    -DCMAKE_PROJECT_INCLUDE_BEFORE=${CMAKE_CURRENT_LIST_DIR}/refuse_packages.cmake)
file(GLOB compiler_for_c ${DIRECTORY}/CMakeFiles/*/CMakeCCompiler.cmake)
if(compiler_for_c)
    message(FATAL_ERROR "a compiler for C was looked for")
endif()

# The checked library is configured alone: it is built the same everywhere.
set(libraries mova_container mova_host mova_host_system)
list(TRANSFORM libraries APPEND _static OUTPUT_VARIABLE static_libraries)
build_project(${DIRECTORY} ${libraries} ${static_libraries})
foreach(library IN LISTS libraries)
    foreach(extension so a)
        if(NOT EXISTS ${DIRECTORY}/mova/lib${library}.${extension})
            message(FATAL_ERROR "lib${library}.${extension} was not built")
        endif()
    endforeach()
endforeach()

if(PKG_CONFIG)
    set(absolute ${DIRECTORY}/absolute)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${absolute} -G ${GENERATOR} ${options}
        -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_LIBDIR=/somewhere/lib -DCMAKE_INSTALL_INCLUDEDIR=/elsewhere/include
        OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY)
    if(NOT said MATCHES "mova does not look at BUILD_SHARED_LIBS")
        message(FATAL_ERROR "BUILD_SHARED_LIBS was not spoken of:\n${said}")
    endif()
    execute_process(COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${absolute}/mova
        ${PKG_CONFIG} --cflags --libs mova_container OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
    if(NOT flags MATCHES "^-I/elsewhere/include -L/somewhere/lib -lmova_container -lmova_host *\n$")
        message(FATAL_ERROR "with absolute directories pkg-config says: ${flags}")
    endif()
endif()
