# SPDX-License-Identifier: MIT
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(REGEX REPLACE "^/[*] SPDX[^\n]*\n" "" example "${example}")
string(FIND "${readme}" "${example}" at)
if(at EQUAL -1)
    message(FATAL_ERROR "${README} does not show ${EXAMPLE} as it is")
endif()
