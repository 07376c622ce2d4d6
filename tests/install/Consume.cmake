# What the consumer tests share: running a command, building and running a consumer project,
# checking that nothing of Formwork's own build reached the consumer's compile lines, and
# comparing the consumer's report with the one every way in must give.

# Starts a consumer script: clears flags from the environment (they would hide a standard or
# option missing from the package), makes a fresh temporary directory `work` named after
# `label`, and sets `cores` for parallel builds.
macro(formwork_start_consumer_script label)
    unset(ENV{CXXFLAGS})
    unset(ENV{LDFLAGS})
    if(DEFINED ENV{TMPDIR})
        set(work $ENV{TMPDIR})
    else()
        set(work /tmp)
    endif()
    string(RANDOM LENGTH 12 suffix)
    set(work ${work}/formwork-${label}-${suffix})
    file(MAKE_DIRECTORY ${work})
    cmake_host_system_information(RESULT cores QUERY NUMBER_OF_PHYSICAL_CORES)
    if(cores LESS 1)
        set(cores 1)
    endif()
endmacro()

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Failed (${result}): ${ARGN}\n${out}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

# Configures, builds and runs the CMake project in `source_dir`, whose program is `program`,
# with any further configure arguments. Sets `last_output` to the program's output.
function(consume source_dir build_dir program)
    run(${CMAKE_COMMAND} -S ${source_dir} -B ${build_dir} -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
        -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${prefix}
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON ${ARGN})
    run(${CMAKE_COMMAND} --build ${build_dir} --target ${program} --parallel ${cores})
    formwork_check_compile_lines(${build_dir}/compile_commands.json ${program})
    run(${build_dir}/${program})
    set(last_output "${last_output}" PARENT_SCOPE)
endfunction()

# The consumer's own compile lines carry no warning, sanitizer or visibility flag: those are
# Formwork's private settings.
function(formwork_check_compile_lines commands_file program)
    file(READ ${commands_file} commands)
    string(JSON count LENGTH "${commands}")
    math(EXPR last "${count} - 1")
    foreach(i RANGE ${last})
        string(JSON file GET "${commands}" ${i} file)
        string(JSON line GET "${commands}" ${i} command)
        if(NOT line MATCHES "CMakeFiles/${program}\\.dir/")
            continue() # Formwork's own sources, built inside a subproject consumer
        endif()
        if(line MATCHES " -W[a-z]| -fsanitize| -fvisibility")
            message(FATAL_ERROR "${program}: a private setting of Formwork reached ${file}:\n${line}")
        endif()
    endforeach()
endfunction()

# Every way in runs the same consumer, which must report the same results.
function(formwork_check_consumer_output output)
    file(READ ${CONSUMER_SOURCE_DIR}/expected.txt expected)
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "The consumer reported\n${output}\ninstead of\n${expected}")
    endif()
endfunction()
