# SPDX-License-Identifier: MIT
# Installs the Debian packages into a root of their own, builds and runs programs against them, installs the next version over
# them, and purges them, which leaves nothing.
#
# cmake -DPACKAGES=... -DSOURCE=... -DDIRECTORY=... -P <this file>
#   PACKAGES  the directory that the packages were built in
include(${CMAKE_CURRENT_LIST_DIR}/use.cmake)

file(REMOVE_RECURSE ${DIRECTORY})
set(root ${DIRECTORY}/root)
set(prefix ${root}/usr)
set(BUILD ${PACKAGES})
set(GENERATOR Ninja)
set(PKG_CONFIG pkg-config)
set(C_COMPILER cc)
set(CXX_COMPILER c++)
foreach(directory info updates triggers)
    file(MAKE_DIRECTORY ${root}/var/lib/dpkg/${directory})
endforeach()
file(TOUCH ${root}/var/lib/dpkg/status ${root}/var/lib/dpkg/available)
execute_process(COMMAND dpkg-architecture -qDEB_HOST_MULTIARCH OUTPUT_VARIABLE machine
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(LIBDIR lib/${machine})
# Their libraries lie where the loader of a whole system looks.
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})

# The C library and its like are the system's own, which this root does not know of.
function(dpkg)
    run(fakeroot dpkg --root=${root} --log=/dev/null --force-depends --force-not-root --force-script-chrootless ${ARGN})
endfunction()

# packages_in(<result> <directory>): those that people install.
function(packages_in result directory)
    file(GLOB packages ${directory}/*.deb)
    list(FILTER packages EXCLUDE REGEX "-dbgsym_")
    list(LENGTH packages count)
    if(NOT count EQUAL 6)
        message(FATAL_ERROR "not six packages: ${packages}")
    endif()
    set(${result} ${packages} PARENT_SCOPE)
endfunction()

# Puts each package together again, under a version that is newer.
function(make_next_version directory)
    file(MAKE_DIRECTORY ${directory} ${DIRECTORY}/content)
    foreach(package IN LISTS ARGN)
        cmake_path(GET package FILENAME name)
        set(content ${DIRECTORY}/content/${name})
        run(dpkg-deb --raw-extract ${package} ${content})
        run(sed -i -E "s/^(Version: .*)/\\1+next/\\; s/\\(= ([^)]*)\\)/(= \\1+next)/g" ${content}/DEBIAN/control)
        run(dpkg-deb --root-owner-group -Znone --build ${content} ${directory}/${name})
    endforeach()
endfunction()

# Of each library's debug symbols, and of what the hardening asks of the linker.
function(check_libraries)
    foreach(library container host host-system)
        file(GLOB symbols ${PACKAGES}/libmova-${library}1-dbgsym_*.deb)
        if(NOT symbols)
            message(SEND_ERROR "no debug symbols for libmova-${library}1")
        endif()
        string(REPLACE - _ library ${library})
        execute_process(COMMAND readelf -W -d -l ${prefix}/${LIBDIR}/libmova_${library}.so OUTPUT_VARIABLE text
            COMMAND_ERROR_IS_FATAL ANY)
        if(NOT text MATCHES "GNU_RELRO" OR NOT text MATCHES "BIND_NOW")
            message(SEND_ERROR "libmova_${library}.so is not hardened:\n${text}")
        endif()
    endforeach()
endfunction()

# Every function that a library exports has a page of the manual.
function(check_manual)
    foreach(library container host)
        execute_process(COMMAND nm -D --defined-only ${prefix}/${LIBDIR}/libmova_${library}.so OUTPUT_VARIABLE symbols
            COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX MATCHALL " T [A-Za-z][A-Za-z0-9_]+" symbols "${symbols}")
        list(TRANSFORM symbols REPLACE " T " "")
        list(LENGTH symbols count)
        foreach(symbol IN LISTS symbols)
            if(NOT EXISTS ${prefix}/share/man/man3/${symbol}.3.gz)
                message(SEND_ERROR "no page of the manual: ${symbol}")
            endif()
        endforeach()
        message(STATUS "${count} functions of ${library} are in the manual")
    endforeach()
    run(man -M ${prefix}/share/man GL_append_after_last)
endfunction()

# fenced_block(<result> <document> <language> <number>): what stands between the fences, of those in the language, counted from 0.
function(fenced_block result document language number)
    file(READ ${SOURCE}/${document} text)
    foreach(skipped RANGE ${number})
        string(FIND "${text}" "\n```${language}\n" at)
        if(at EQUAL -1)
            message(FATAL_ERROR "${document} has too few blocks in ${language}")
        endif()
        string(SUBSTRING "${text}" ${at} -1 text)
        string(REGEX REPLACE "^\n[^\n]*\n" "" text "${text}")
    endforeach()
    string(FIND "${text}" "```" at)
    string(SUBSTRING "${text}" 0 ${at} text)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The README's programs, by its own commands, and through CMake by those of docs/install.md. `./dev first-minutes` goes the
# whole way.
function(use_documents)
    set(work ${DIRECTORY}/documents)
    fenced_block(c README.md c 0)
    fenced_block(cxx README.md cpp 0)
    fenced_block(compile README.md sh 1)
    fenced_block(project docs/install.md cmake 0)
    fenced_block(build docs/install.md sh 3)
    file(WRITE ${work}/ten_lines.c "${c}")
    file(WRITE ${work}/ten_lines.cpp "${cxx}")
    file(WRITE ${work}/CMakeLists.txt "${project}")
    file(WRITE ${work}/commands.sh "cd ${work}\n${compile}./ten_lines\n./ten_lines_cpp\n${build}")
    run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig CMAKE_PREFIX_PATH=${prefix} sh -euxc ". ${work}/commands.sh")
endfunction()

# Meson finds what is installed by itself.
function(use_with_meson)
    set(project ${DIRECTORY}/meson)
    file(COPY ${CMAKE_CURRENT_LIST_DIR}/meson_installed/meson.build ${CMAKE_CURRENT_LIST_DIR}/consumer.c DESTINATION ${project})
    run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig meson setup ${project}/build ${project})
    run(meson test -C ${project}/build)
endfunction()

packages_in(packages ${PACKAGES})
dpkg(--install ${packages})
check_libraries()
check_manual()
use_installed()
use_documents()
use_with_meson()

make_next_version(${DIRECTORY}/next ${packages})
packages_in(newer ${DIRECTORY}/next)
dpkg(--install ${newer})
execute_process(COMMAND dpkg-query --admindir=${root}/var/lib/dpkg -W -f "\${Version} \${db:Status-Status}\\n"
    OUTPUT_VARIABLE versions COMMAND_ERROR_IS_FATAL ANY)
if(NOT versions MATCHES "^([0-9.]+\\+next installed\n)+$")
    message(FATAL_ERROR "after the upgrade:\n${versions}")
endif()
use_installed()

dpkg(--purge libmova-checked libmova-dev libmova-container1 libmova-host1 libmova-host-system1 mova-doc)
file(GLOB_RECURSE left LIST_DIRECTORIES true RELATIVE ${root} ${root}/*)
list(FILTER left EXCLUDE REGEX "^var(/lib(/dpkg.*)?)?$")
if(left)
    message(FATAL_ERROR "purged, and left behind: ${left}")
endif()
