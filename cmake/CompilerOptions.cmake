# Warning and sanitizer options, applied privately to every target of this project.

add_library(formwork_options INTERFACE)

target_compile_options(formwork_options INTERFACE -Wall -Wextra -Wpedantic)
if(FORMWORK_WARNINGS_AS_ERRORS)
    target_compile_options(formwork_options INTERFACE -Werror)
endif()

if(FORMWORK_SANITIZE)
    set(_formwork_sanitize_flags
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(formwork_options INTERFACE ${_formwork_sanitize_flags})
    target_link_options(formwork_options INTERFACE ${_formwork_sanitize_flags})
endif()

# Fuzzing instruments every target for coverage and runs it under both sanitizers; only the
# fuzz targets themselves link libFuzzer's main.
if(FORMWORK_BUILD_FUZZ)
    set(_formwork_fuzz_flags -fsanitize=fuzzer-no-link,address,undefined
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(formwork_options INTERFACE ${_formwork_fuzz_flags})
    target_link_options(formwork_options INTERFACE -fsanitize=address,undefined)
endif()

# Attach the project's options to a target without exporting them to consumers.
function(formwork_use_options target)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:formwork_options>)
endfunction()

# Adds one folder's sources and public headers to a library. Header paths are given relative
# to the calling folder and installed under include/formwork/ with their repository paths.
function(formwork_target_files target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;SOURCES")
    list(TRANSFORM arg_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(${target}
        PRIVATE ${arg_SOURCES}
        PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
endfunction()

# Makes one of the project's libraries: the target, its Formwork:: alias, the project's
# options, and a generated export header (`<export_header>`, relative to the generated include
# root) that marks the public surface of a shared build. The headers need C++20, so every
# consumer gets it from the target; the warning, sanitizer and visibility settings stay private.
function(formwork_add_library target export_header)
    add_library(${target})
    add_library(Formwork::${target} ALIAS ${target})
    target_compile_features(${target} PUBLIC cxx_std_20)
    formwork_use_options(${target})
    set(header ${FORMWORK_GENERATED_INCLUDE_DIR}/${export_header})
    generate_export_header(${target} BASE_NAME ${target} EXPORT_FILE_NAME ${header})
    # Installed shared, a library finds the project's libraries it needs (formwork needs crate)
    # beside itself: a consumer's own run path does not reach the needs of its libraries.
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
    target_sources(${target} PUBLIC FILE_SET generated_headers TYPE HEADERS
        BASE_DIRS ${FORMWORK_GENERATED_INCLUDE_DIR}
        FILES ${header})
endfunction()
