# SPDX-License-Identifier: MIT
# Which compilers the libraries are built with. docs/platforms.md says which of them are tested.
set(oldest_GNU 11)
set(oldest_Clang 13)
set(oldest ${oldest_${CMAKE_CXX_COMPILER_ID}})
if(oldest AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS oldest)
    message(FATAL_ERROR "mova needs gcc ${oldest_GNU}, clang ${oldest_Clang} or a later one: this is "
                        "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
endif()
