# Checks that the folders of geom/ stay in layers: a file in one folder may include
# tessar/, geom/FormworkExport.h and the folders listed before its own (or its own), never
# one listed after it. Run as `cmake -DROOT=<tree> -P CheckLayers.cmake`; fails with one
# line per offending include.

set(layers entity storage spatial mesh connectivity curve topomesh view io)

if(NOT DEFINED ROOT)
    message(FATAL_ERROR "CheckLayers: set ROOT to the tree that holds geom/")
endif()

get_filename_component(ROOT "${ROOT}" ABSOLUTE)
file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/geom/*.h" "${ROOT}/geom/*.cpp"
    "${ROOT}/geom/*.inl")
set(violations "")
foreach(file IN LISTS files)
    if(NOT file MATCHES "^geom/([^/]+)/")
        continue()  # the umbrella and export headers sit above the layers
    endif()
    set(own "${CMAKE_MATCH_1}")
    list(FIND layers "${own}" ownIndex)
    if(ownIndex EQUAL -1)
        list(APPEND violations "${file}: folder geom/${own} is not a known layer")
        continue()
    endif()
    file(STRINGS "${ROOT}/${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"geom/[^/\"]+/")
    foreach(line IN LISTS includes)
        string(REGEX MATCH "\"geom/([^/\"]+)/[^\"]*\"" included "${line}")
        set(other "${CMAKE_MATCH_1}")
        list(FIND layers "${other}" otherIndex)
        if(otherIndex GREATER ownIndex OR otherIndex EQUAL -1)
            list(APPEND violations "${file} includes ${included}, a layer above geom/${own}")
        endif()
    endforeach()
endforeach()

if(violations)
    list(JOIN violations "\n" text)
    message(FATAL_ERROR "Layering broken:\n${text}")
endif()
list(LENGTH files count)
message(STATUS "Layers hold over ${count} files")
