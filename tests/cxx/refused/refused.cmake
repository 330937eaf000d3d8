# SPDX-License-Identifier: MIT
# Compiles a program that the typed layer refuses, and fails unless the compiler says what the program's first line comment says,
# and no other error.
#
# cmake -DCOMPILER=... -DFLAGS=... -DSOURCE=... -P <this file>
file(STRINGS ${SOURCE} text REGEX "^// " LIMIT_COUNT 1)
string(REGEX REPLACE "^// " "" text "${text}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
execute_process(COMMAND ${COMPILER} ${flags} -fsyntax-only ${SOURCE} RESULT_VARIABLE result ERROR_VARIABLE said)
if(result EQUAL 0)
    message(FATAL_ERROR "${SOURCE} was not refused")
endif()
# Where an include ends the compilation, that is a fatal error after it.
string(REGEX MATCHALL "[0-9]: error: " errors "${said}")
list(LENGTH errors count)
string(FIND "${said}" "${text}" at)
if(at EQUAL -1 OR NOT count EQUAL 1)
    message(FATAL_ERROR "expected once: ${text}\nsaid ${count} times:\n${said}")
endif()
