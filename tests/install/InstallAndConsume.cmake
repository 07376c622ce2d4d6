# Installs Formwork into a fresh temporary prefix, then builds and runs against it the consumer
# in tests/install/consumer and every example marked in the README. The consumers set no
# language standard and no flags of their own: whatever they need comes from the package.
#
# Variables: FORMWORK_SOURCE_DIR, CONSUMER_SOURCE_DIR, README, CXX_COMPILER, BUILD_TYPE, KIND
# (a label), and either BUILD_DIR (install an existing build tree) or BUILD_SHARED (configure
# and build the libraries afresh, shared when ON).

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/ReadmeExamples.cmake)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Failed (${result}): ${ARGN}\n${out}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

# Configures, builds and runs the CMake project in `source_dir`, whose program is `program`.
function(consume source_dir build_dir program)
    run(${CMAKE_COMMAND} -S ${source_dir} -B ${build_dir} -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
        -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${prefix})
    run(${CMAKE_COMMAND} --build ${build_dir})
    run(${build_dir}/${program})
    message(STATUS "${program}: ${last_output}")
endfunction()

# Flags from the environment would hide a standard or option missing from the package.
unset(ENV{CXXFLAGS})
unset(ENV{LDFLAGS})

if(DEFINED ENV{TMPDIR})
    set(temp_root $ENV{TMPDIR})
else()
    set(temp_root /tmp)
endif()
string(RANDOM LENGTH 12 suffix)
set(work ${temp_root}/formwork-install-${KIND}-${suffix})
file(MAKE_DIRECTORY ${work})
set(prefix ${work}/prefix)

cmake_host_system_information(RESULT cores QUERY NUMBER_OF_PHYSICAL_CORES)
if(cores LESS 1)
    set(cores 1)
endif()

if(NOT DEFINED BUILD_DIR)
    set(BUILD_DIR ${work}/formwork)
    run(${CMAKE_COMMAND} -S ${FORMWORK_SOURCE_DIR} -B ${BUILD_DIR}
        -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
        -DBUILD_SHARED_LIBS=${BUILD_SHARED} -DFORMWORK_BUILD_TESTS=OFF -DFORMWORK_BUILD_BENCH=OFF)
    run(${CMAKE_COMMAND} --build ${BUILD_DIR} --parallel ${cores})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# What the package passes on: C++20 for every target, and none of the project's own warning,
# sanitizer or visibility settings.
file(GLOB_RECURSE exported ${prefix}/FormworkTargets.cmake)
file(READ "${exported}" targets)
string(REGEX MATCHALL "INTERFACE_COMPILE_FEATURES \"cxx_std_20\"" features "${targets}")
list(LENGTH features num_features)
if(NOT num_features EQUAL 3)
    message(FATAL_ERROR "${exported}: not every target requires C++20")
endif()
if(targets MATCHES "-W[a-z]|-fsanitize|-fvisibility|VISIBILITY")
    message(FATAL_ERROR "${exported}: passes on a setting of the project's own build")
endif()

consume(${CONSUMER_SOURCE_DIR} ${work}/consumer consumer)

formwork_write_readme_examples(${README} ${work}/readme example_dirs)
foreach(dir IN LISTS example_dirs)
    consume(${work}/readme/${dir} ${work}/readme-build/${dir} ${dir})
endforeach()

file(REMOVE_RECURSE ${work})
