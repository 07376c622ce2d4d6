# Installs Formwork into a fresh temporary prefix and builds and runs the consumer against it.
#
# Variables: FORMWORK_SOURCE_DIR, CONSUMER_SOURCE_DIR, BUILD_TYPE, KIND (a label), and either
# BUILD_DIR (install an existing build tree) or BUILD_SHARED (configure and build the libraries
# afresh, shared when ON).

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Failed (${result}): ${ARGN}\n${out}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

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
        -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DBUILD_SHARED_LIBS=${BUILD_SHARED}
        -DFORMWORK_BUILD_TESTS=OFF -DFORMWORK_BUILD_BENCH=OFF)
    run(${CMAKE_COMMAND} --build ${BUILD_DIR} --parallel ${cores})
endif()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${work}/consumer
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${work}/consumer)
run(${work}/consumer/consumer)
message(STATUS "${last_output}")

file(REMOVE_RECURSE ${work})
