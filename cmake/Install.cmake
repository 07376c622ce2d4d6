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
