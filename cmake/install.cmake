# SPDX-License-Identifier: MIT
# What `cmake --install` gives: the public headers, the libraries, the CMake package `mova` and the pkg-config
# files. All of it finds itself, wherever it is moved to.
include(CMakePackageConfigHelpers)

foreach(header ${container_headers} ${host_headers} ${cxx_headers})
    cmake_path(GET header PARENT_PATH room)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mova/${room})
endforeach()

install(TARGETS mova_container mova_container_static mova_host mova_host_static
    mova_host_system mova_host_system_static EXPORT mova
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

# ---- the checked libraries: in a directory of their own, by the names of the ordinary ones ----

if(MOVA_BUILD_CHECKED)
    set(checked_directory ${CMAKE_INSTALL_LIBDIR}/mova-checked)
    set_target_properties(mova_container_checked PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS mova_container_checked mova_host_checked
            LIBRARY DESTINATION ${checked_directory} NAMELINK_SKIP)
    install(TARGETS mova_container_checked_static mova_host_checked_static EXPORT mova-checked
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(FILES checked/checked.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mova/checked)
    if(IS_ABSOLUTE ${checked_directory})
        configure_script(${checked_directory} installed/mova-check)
    else()
        file(RELATIVE_PATH checked_from_script ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${checked_directory})
        configure_script("\$own/${checked_from_script}" installed/mova-check)
    endif()
    install(PROGRAMS ${CMAKE_CURRENT_BINARY_DIR}/installed/mova-check DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES checked/mova-check.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

# ---- views for debuggers: gdb loads them by itself, by the library's path. The prefix is that of the installation ----

set(data_directory ${CMAKE_INSTALL_DATADIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/debugger/ DESTINATION ${data_directory}/mova/debugger
    FILES_MATCHING PATTERN *.py PATTERN auto_load.py EXCLUDE)
set(libraries_from_root ${CMAKE_INSTALL_LIBDIR})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(libraries_from_root "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}")
endif()
install(FILES ${PROJECT_SOURCE_DIR}/debugger/auto_load.py DESTINATION "${data_directory}/gdb/auto-load${libraries_from_root}"
    RENAME libmova_container.so.${PROJECT_VERSION}-gdb.py)

# ---- the manual: a page for each C function, from the headers' own comments ----

if(MOVA_BUILD_MANUAL)
    foreach(tool doxygen python3)
        find_program(MOVA_${tool} ${tool})
        if(NOT MOVA_${tool})
            message(FATAL_ERROR "MOVA_BUILD_MANUAL needs ${tool}")
        endif()
    endforeach()
    set(manual ${PROJECT_BINARY_DIR}/manual)
    list(TRANSFORM container_headers PREPEND ${PROJECT_SOURCE_DIR}/mova/ OUTPUT_VARIABLE described)
    list(TRANSFORM host_headers PREPEND ${PROJECT_SOURCE_DIR}/mova/ OUTPUT_VARIABLE host_described)
    file(GLOB manual_scripts ${PROJECT_SOURCE_DIR}/docs/site/*.py ${PROJECT_SOURCE_DIR}/docs/site/Doxyfile)
    set(manual_script ${PROJECT_SOURCE_DIR}/docs/site/manual.sh)
    add_custom_command(OUTPUT ${manual}.made
        COMMAND ${manual_script} ${PROJECT_SOURCE_DIR} ${manual} ${PROJECT_VERSION}
        COMMAND ${CMAKE_COMMAND} -E touch ${manual}.made
        DEPENDS ${described} ${host_described} ${manual_scripts} ${manual_script}
        COMMENT "The manual" VERBATIM)
    add_custom_target(mova_manual ALL DEPENDS ${manual}.made)
    install(DIRECTORY ${manual}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR})
endif()

# ---- the CMake package ----

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/mova)
install(EXPORT mova NAMESPACE mova:: FILE mova-targets.cmake DESTINATION ${package_directory})
# By themselves: they may come later than the others.
if(MOVA_BUILD_CHECKED)
    install(EXPORT mova-checked NAMESPACE mova:: FILE mova-checked-targets.cmake DESTINATION ${package_directory})
endif()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/mova-config.cmake.in mova-config.cmake
    INSTALL_DESTINATION ${package_directory} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(mova-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mova-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/mova-config-version.cmake
    DESTINATION ${package_directory})

# ---- pkg-config ----

# From where the file lies, unless a directory was given as an absolute one, which stays where it is.
set(prefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    file(RELATIVE_PATH prefix_from_file ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" prefix_from_file ${prefix_from_file})
    set(prefix "\${pcfiledir}/${prefix_from_file}")
endif()
foreach(directory libdir includedir)
    string(TOUPPER CMAKE_INSTALL_${directory} variable)
    set(${directory} ${${variable}})
    if(NOT IS_ABSOLUTE ${${variable}})
        set(${directory} "\${prefix}/${${variable}}")
    endif()
endforeach()

# install_pkg_config(<library> <description> <libraries required> <options of a static link> [<options of every link>])
function(install_pkg_config name description requires libs_private)
    list(JOIN ARGN " " libs)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

install_pkg_config(mova_container "${PROJECT_DESCRIPTION}" mova_host "-l${cxx_runtime} -lm")
set(host_private "-l${cxx_runtime} -lm ${CMAKE_THREAD_LIBS_INIT}")
install_pkg_config(mova_host "The default memory, message and error services of mova_container" "" "${host_private}")
install_pkg_config(mova_host_system "The same services with every block from malloc, for valgrind and sanitizers" ""
                   "${host_private}")
if(MOVA_BUILD_CHECKED)
    # There are archives alone: what a link of them needs is named always.
    list(TRANSFORM CMAKE_DL_LIBS PREPEND -l OUTPUT_VARIABLE dl)
    install_pkg_config(mova_host_checked "mova_host with checks of the memory that it gives" "" ""
                       "-l${cxx_runtime} -lm ${CMAKE_THREAD_LIBS_INIT}")
    install_pkg_config(mova_container_checked "mova_container with checks of how a program uses it" mova_host_checked ""
                       "-l${cxx_runtime} -lm ${dl}")
endif()
