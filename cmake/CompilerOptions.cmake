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
