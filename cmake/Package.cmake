# `make package`: a Debian package and a tarball of everything `cmake --install` puts in place
# (libraries, headers, the CMake package, the pkg-config files, the formwork program and the
# docs), made by CPack from the release build.

set(CPACK_PACKAGE_NAME formwork)
set(CPACK_PACKAGE_VENDOR "Formwork")
set(CPACK_PACKAGE_CONTACT "Formwork developers <formwork@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_INSTALL_DIRECTORY formwork)
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/README.md)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Point and triangle meshes with attribute channels and change notices, a half-edge mesh with\n\
undo through saved states, curves, spatial trees, a camera and a packet file format, with\n\
the formwork program to import, inspect, convert and render its files.")
# The program's libraries at run time; the headers need a C++20 compiler and the packet
# library's checksum headers.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libassimp5, libspng0, libxxhash-dev, libc6, libstdc++6")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)

set(FORMWORK_DOC_INSTALL_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/formwork)
install(FILES README.md DESTINATION ${FORMWORK_DOC_INSTALL_DIR})
install(DIRECTORY docs/ DESTINATION ${FORMWORK_DOC_INSTALL_DIR}
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")

include(CPack)
