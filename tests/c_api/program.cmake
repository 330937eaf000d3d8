# SPDX-License-Identifier: MIT
include_guard()

# mova_c_program(<name> SOURCES ... LINKS ...): a program in C11.
function(mova_c_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_compile_features(${name} PRIVATE c_std_11)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LINKS})
    # A compiler for C links a part of the sanitizers' runtime; the libraries need all of it.
    if("${CMAKE_C_FLAGS}" MATCHES "-fsanitize")
        set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    endif()
endfunction()
