# SPDX-License-Identifier: MIT
# 32-bit x86 on Linux, by Debian's cross compiler.
# CONTRIBUTING.md says what else belongs to an architecture.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

# Most x86-64 machines run the programs themselves, by the dynamic linker that is made for them. Elsewhere qemu-user
# runs them; in its version 7.2 a second thread of theirs does not start.
set(mova_loader /usr/i686-linux-gnu/lib/ld-linux.so.2)
execute_process(COMMAND ${mova_loader} --version RESULT_VARIABLE mova_loader_result OUTPUT_QUIET ERROR_QUIET)
if(mova_loader_result EQUAL 0)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${mova_loader} --library-path /usr/i686-linux-gnu/lib)
else()
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386 -L /usr/i686-linux-gnu)
endif()

# The libraries of this machine are of another kind.
set(CMAKE_FIND_ROOT_PATH /usr/i686-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
