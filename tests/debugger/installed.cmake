# SPDX-License-Identifier: MIT
# Installs a build, and has gdb look at a program that runs on it, without a word about where the views are.
#
# cmake -DBUILD=... -DDIRECTORY=... -DGDB=... -DPROGRAM=... -DLIBDIR=... -DVERSION=... -P <this file>
include(${CMAKE_CURRENT_LIST_DIR}/../consumer/support.cmake)

file(REMOVE_RECURSE ${DIRECTORY})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${DIRECTORY})
set(folder ${DIRECTORY}/share/gdb/auto-load)
# The two settings stand for /usr/share/gdb/auto-load, into which an installation below /usr goes.
execute_process(COMMAND ${GDB} -nx -batch -iex "set auto-load scripts-directory ${folder}" -iex "set auto-load safe-path ${folder}"
    -ex "handle SIGTRAP nostop noprint nopass" -ex "set environment LD_LIBRARY_PATH ${DIRECTORY}/${LIBDIR}" -ex "break stop_here"
    -ex run -ex "print *element_ring" -ex "mova check element_ring" -ex "info auto-load python-scripts" ${PROGRAM}
    OUTPUT_VARIABLE text ERROR_VARIABLE text)
foreach(expected "= element ring, 4 elements of 4 bytes = {20, 30, 40, 10}" "element list: invariants 1 to 4 hold"
        "${folder}${DIRECTORY}/${LIBDIR}/libmova_container.so.${VERSION}-gdb.py")
    string(FIND "${text}" "${expected}" position)
    if(position EQUAL -1)
        message(SEND_ERROR "gdb does not say \"${expected}\", but:\n${text}")
    endif()
endforeach()
file(GLOB_RECURSE compiled ${DIRECTORY}/share/*.pyc)
if(compiled)
    message(SEND_ERROR "gdb left ${compiled}")
endif()
