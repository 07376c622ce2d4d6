# Installs the libraries, their headers and a package config so that a consumer can write
#   find_package(Formwork REQUIRED)
#   target_link_libraries(app PRIVATE Formwork::formwork)

include(CMakePackageConfigHelpers)

install(TARGETS tessar crate formwork
    EXPORT FormworkTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    FILE_SET HEADERS DESTINATION ${FORMWORK_INCLUDE_INSTALL_DIR}
    FILE_SET generated_headers DESTINATION ${FORMWORK_INCLUDE_INSTALL_DIR}
    INCLUDES DESTINATION ${FORMWORK_INCLUDE_INSTALL_DIR})

set(FORMWORK_CMAKE_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Formwork)

install(EXPORT FormworkTargets
    NAMESPACE Formwork::
    DESTINATION ${FORMWORK_CMAKE_INSTALL_DIR})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/FormworkConfig.cmake.in
    ${PROJECT_BINARY_DIR}/FormworkConfig.cmake
    INSTALL_DESTINATION ${FORMWORK_CMAKE_INSTALL_DIR})

write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/FormworkConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)

install(FILES
    ${PROJECT_SOURCE_DIR}/cmake/FindXXHash.cmake
    ${PROJECT_BINARY_DIR}/FormworkConfig.cmake
    ${PROJECT_BINARY_DIR}/FormworkConfigVersion.cmake
    DESTINATION ${FORMWORK_CMAKE_INSTALL_DIR})

# pkg-config files for Makefile and Meson users, relocatable (paths relative to the file's
# own folder), so that an unpacked package works wherever it lands.
file(RELATIVE_PATH FORMWORK_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" FORMWORK_PC_PREFIX "${FORMWORK_PC_PREFIX}")
if(BUILD_SHARED_LIBS)
    set(FORMWORK_PC_STATIC_LIBS "")
else()
    set(FORMWORK_PC_STATIC_LIBS " -lxxhash -pthread")
endif()
foreach(pc IN ITEMS tessar crate formwork)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/pkgconfig/${pc}.pc.in
        ${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${pc}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
