# Unpacks the Debian package that `make package` made into a fresh temporary root (as
# `dpkg-deb -x` does, without installing it), builds the consumer against the unpacked tree
# through CMake and through pkg-config, and runs the unpacked program on a mesh it makes.
#
# Variables: PACKAGE_DIR (where CPack put the .deb), CONSUMER_SOURCE_DIR, CXX_COMPILER.

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/Consume.cmake)

file(GLOB debs ${PACKAGE_DIR}/formwork_*.deb)
list(LENGTH debs num_debs)
if(NOT num_debs EQUAL 1)
    message(FATAL_ERROR "Expected one formwork .deb in ${PACKAGE_DIR}, found: ${debs}")
endif()
formwork_start_consumer_script(package)
set(root ${work}/root)
file(MAKE_DIRECTORY ${root})
run(dpkg-deb -x ${debs} ${root})
file(SIZE ${debs} deb_size)
message(STATUS "${debs}: ${deb_size} bytes")

set(prefix ${root}/usr)
set(BUILD_TYPE Release)
consume(${CONSUMER_SOURCE_DIR} ${work}/consumer consumer)
formwork_check_consumer_output("${last_output}")

file(GLOB_RECURSE pc_file ${root}/formwork.pc)
get_filename_component(pc_dir "${pc_file}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(sh -c "${CXX_COMPILER} ${CONSUMER_SOURCE_DIR}/main.cpp -o ${work}/pkgconfig-consumer \
$(pkg-config --cflags --libs formwork)")
run(${work}/pkgconfig-consumer)
formwork_check_consumer_output("${last_output}")

set(program ${prefix}/bin/formwork)
run(${program} make-torus ${work}/torus.fwpk)
run(${program} info ${work}/torus.fwpk)
if(NOT last_output MATCHES "vertices")
    message(FATAL_ERROR "The unpacked program's info printed:\n${last_output}")
endif()
run(${program} render ${work}/torus.fwpk ${work}/torus.png --quiet)
file(SIZE ${work}/torus.png png_size)
if(png_size LESS 1000)
    message(FATAL_ERROR "The unpacked program rendered a ${png_size}-byte picture")
endif()
message(STATUS "The unpacked package serves the consumer and runs the program")
file(REMOVE_RECURSE ${work})
