# SPDX-License-Identifier: MIT
# Compiles every public header for itself, as C99 and C11, as C++11 for those who use the library, and as C++20; each before
# and after the standard library's <stdio.h>, which declares names like the library's own. None of them makes a compiler warn
# of what programs may ask it to warn of.

# Writes a source that includes the two headers in this order, the first one twice.
function(write_header_source path first second identifier)
    file(CONFIGURE OUTPUT ${path} @ONLY CONTENT
"#include <@first@>
#include <@first@>
#include <@second@>
extern int header_@identifier@;
int header_@identifier@;
")
endfunction()

set(warnings_c -Wmissing-prototypes -Wstrict-prototypes)
set(warnings_cpp -Wold-style-cast -fno-exceptions -fno-rtti)

# add_header_checks(<standard> <extension> <header of the standard library> <header>...)
function(add_header_checks standard extension stdio)
    set(name headers_as_${standard})
    add_library(${name} OBJECT)
    foreach(header ${ARGN})
        string(MAKE_C_IDENTIFIER ${header} identifier)
        set(path ${CMAKE_CURRENT_BINARY_DIR}/${name}/${identifier})
        write_header_source(${path}_first.${extension} ${header} ${stdio} ${identifier}_first)
        write_header_source(${path}_last.${extension} ${stdio} ${header} ${identifier}_last)
        target_sources(${name} PRIVATE ${path}_first.${extension} ${path}_last.${extension})
    endforeach()
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    # Named by its option: a compiler feature asks for no more than "at least".
    target_compile_options(${name} PRIVATE -std=${standard} -Wall -Wextra -pedantic-errors -Werror
        -Wmissing-declarations -Wundef ${warnings_${extension}})
endfunction()

foreach(list container_headers host_headers)
    get_directory_property(headers DIRECTORY ${PROJECT_SOURCE_DIR}/mova DEFINITION ${list})
    list(TRANSFORM headers PREPEND mova/)
    list(APPEND public_headers ${headers})
endforeach()
add_header_checks(c99 c stdio.h ${public_headers})
add_header_checks(c11 c stdio.h ${public_headers})
add_header_checks(c++11 cpp cstdio ${public_headers})
# The typed layer's are C++20 alone.
get_directory_property(typed_headers DIRECTORY ${PROJECT_SOURCE_DIR}/mova DEFINITION cxx_headers)
list(TRANSFORM typed_headers PREPEND mova/)
if(ask_compilers AND NOT MOVA_QUICK_TESTS)
    add_header_checks(c++20 cpp cstdio ${public_headers} ${typed_headers})
endif()
