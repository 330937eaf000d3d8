# What `cmake --install` gives: the public headers, the libraries, the CMake package `mova` and the pkg-config
# files. All of it finds itself, wherever it is moved to.
include(CMakePackageConfigHelpers)

set_target_properties(mova_container PROPERTIES INSTALL_RPATH "$ORIGIN")

foreach(header ${container_headers} ${host_headers})
    cmake_path(GET header PARENT_PATH room)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mova/${room})
endforeach()

install(TARGETS mova_container mova_container_static mova_host mova_host_static EXPORT mova
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

# The C++ runtime that this compiler links. A static link by a compiler for C has to name it.
set(cxx_runtime stdc++)
if("c++" IN_LIST CMAKE_CXX_IMPLICIT_LINK_LIBRARIES)
    set(cxx_runtime c++)
endif()
foreach(library mova_container_static mova_host_static)
    target_link_libraries(${library} INTERFACE $<INSTALL_INTERFACE:$<$<LINK_LANGUAGE:C>:${cxx_runtime}>>)
endforeach()

# ---- the CMake package -------------------------------------------------------------------------------------------

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/mova)
install(EXPORT mova NAMESPACE mova:: FILE mova-targets.cmake DESTINATION ${package_directory})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/mova-config.cmake.in mova-config.cmake
    INSTALL_DESTINATION ${package_directory} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(mova-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mova-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/mova-config-version.cmake
    DESTINATION ${package_directory})

# ---- pkg-config --------------------------------------------------------------------------------------------------

file(RELATIVE_PATH prefix_from_file ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH libdir_from_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH includedir_from_prefix ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
string(REGEX REPLACE "/$" "" prefix_from_file ${prefix_from_file})

# install_pkg_config(<library> <description> <libraries required> <options of a static link>)
function(install_pkg_config name description requires libs_private)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

install_pkg_config(mova_container "${PROJECT_DESCRIPTION}" mova_host "-l${cxx_runtime} -lm")
install_pkg_config(mova_host "The default memory, message and error services of mova_container" ""
                   "-l${cxx_runtime} -lm ${CMAKE_THREAD_LIBS_INIT}")
