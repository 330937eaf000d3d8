# SPDX-License-Identifier: MIT
# GoogleTest, built from Debian's source package with the flags of this build, so that one way serves every compiler,
# sanitizer and target platform.
set(MOVA_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "The sources of GoogleTest (Debian: package googletest)")
if(NOT EXISTS ${MOVA_GOOGLETEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "the tests need GoogleTest: install the package googletest, or set MOVA_GOOGLETEST_SOURCE")
endif()

# Its warnings are not ours to mend.
function(mova_add_googletest)
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
    set(CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS} -w")
    add_subdirectory(${MOVA_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    foreach(target gtest gtest_main)
        get_target_property(directories ${target} INTERFACE_INCLUDE_DIRECTORIES)
        set_target_properties(${target} PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${directories}")
        target_compile_options(${target} PRIVATE ${test_options})
    endforeach()
endfunction()
mova_add_googletest()
include(GoogleTest)
