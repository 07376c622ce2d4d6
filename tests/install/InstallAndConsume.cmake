# Installs Formwork into a fresh temporary prefix, then builds and runs against it the consumer
# in tests/install/consumer and every example marked in the README. The consumers set no
# language standard and no flags of their own: whatever they need comes from the package.
#
# Variables: FORMWORK_SOURCE_DIR, FORMWORK_VERSION, LIB_DIR, CONSUMER_SOURCE_DIR, README,
# CXX_COMPILER, OTHER_CXX_COMPILER (optional), BUILD_TYPE, KIND (a label), and either BUILD_DIR (install an existing build tree) or BUILD_SHARED (configure
# and build the libraries afresh, shared when ON).

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/ReadmeExamples.cmake)

include(${CMAKE_CURRENT_LIST_DIR}/Consume.cmake)

formwork_start_consumer_script(install-${KIND})
set(prefix ${work}/prefix)

if(NOT DEFINED BUILD_DIR)
    set(BUILD_DIR ${work}/formwork)
    run(${CMAKE_COMMAND} -S ${FORMWORK_SOURCE_DIR} -B ${BUILD_DIR}
        -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
        -DBUILD_SHARED_LIBS=${BUILD_SHARED} -DFORMWORK_BUILD_TESTS=OFF -DFORMWORK_BUILD_BENCH=OFF)
    run(${CMAKE_COMMAND} --build ${BUILD_DIR} --parallel ${cores})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# The version check: the version this is works, one minor version newer is refused.
string(REGEX MATCH "^[0-9]+\\.[0-9]+" version "${FORMWORK_VERSION}")
string(REGEX REPLACE "^([0-9]+)\\.([0-9]+)$" "\\1" major "${version}")
string(REGEX REPLACE "^([0-9]+)\\.([0-9]+)$" "\\2" minor "${version}")
math(EXPR newer_minor "${minor} + 1")
execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${work}/too-new
    -DCMAKE_PREFIX_PATH=${prefix} -DFORMWORK_REQUEST=${major}.${newer_minor}
    RESULT_VARIABLE refused OUTPUT_QUIET ERROR_QUIET)
if(refused EQUAL 0)
    message(FATAL_ERROR "find_package(Formwork ${major}.${newer_minor}) accepted version ${version}")
endif()

consume(${CONSUMER_SOURCE_DIR} ${work}/consumer consumer -DFORMWORK_REQUEST=${version})
formwork_check_consumer_output("${last_output}")


# The same consumer for Makefile and Meson users: the compiler and pkg-config only.
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIB_DIR}/pkgconfig)
run(sh -c "${CXX_COMPILER} ${CONSUMER_SOURCE_DIR}/main.cpp -o ${work}/pkgconfig-consumer \
$(pkg-config --cflags --libs formwork)")
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIB_DIR})
run(${work}/pkgconfig-consumer)
formwork_check_consumer_output("${last_output}")

formwork_write_readme_examples(${README} ${work}/readme example_dirs)
foreach(dir IN LISTS example_dirs)
    consume(${work}/readme/${dir} ${work}/readme-build/${dir} ${dir})
    message(STATUS "${dir}: ${last_output}")
endforeach()

# The same package serves the consumer and the README's examples built with the other compiler.
if(OTHER_CXX_COMPILER)
    set(CXX_COMPILER ${OTHER_CXX_COMPILER})
    consume(${CONSUMER_SOURCE_DIR} ${work}/other/consumer consumer)
    formwork_check_consumer_output("${last_output}")
    foreach(dir IN LISTS example_dirs)
        consume(${work}/readme/${dir} ${work}/other/readme-build/${dir} ${dir})
    endforeach()
endif()

file(REMOVE_RECURSE ${work})
