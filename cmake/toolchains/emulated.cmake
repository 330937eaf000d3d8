# SPDX-License-Identifier: MIT
# Another machine running Linux, by Debian's cross compiler; the programs run under qemu-user. MOVA_MACHINE is the machine as
# the compiler's name has it: s390x-linux-gnu.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MOVA_MACHINE)
string(REGEX MATCH "^[a-z0-9]+" CMAKE_SYSTEM_PROCESSOR "${MOVA_MACHINE}")
set(CMAKE_SYSTEM_NAME Linux)

set(CMAKE_C_COMPILER ${MOVA_MACHINE}-gcc)
set(CMAKE_CXX_COMPILER ${MOVA_MACHINE}-g++)
string(REPLACE "powerpc" "ppc" mova_emulated ${CMAKE_SYSTEM_PROCESSOR})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${mova_emulated} -L /usr/${MOVA_MACHINE})

# The libraries of this machine are of another kind.
set(CMAKE_FIND_ROOT_PATH /usr/${MOVA_MACHINE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
