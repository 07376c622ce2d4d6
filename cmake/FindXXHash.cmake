# Finds xxHash (Debian: libxxhash-dev) and makes the imported target XXHash::xxhash.
# Installed beside the package config, so that a consumer of a static crate finds it too.

find_path(XXHash_INCLUDE_DIR NAMES xxhash.h)
find_library(XXHash_LIBRARY NAMES xxhash)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(XXHash REQUIRED_VARS XXHash_LIBRARY XXHash_INCLUDE_DIR)

if(XXHash_FOUND AND NOT TARGET XXHash::xxhash)
    add_library(XXHash::xxhash UNKNOWN IMPORTED)
    set_target_properties(XXHash::xxhash PROPERTIES
        IMPORTED_LOCATION "${XXHash_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${XXHash_INCLUDE_DIR}")
endif()
mark_as_advanced(XXHash_INCLUDE_DIR XXHash_LIBRARY)
