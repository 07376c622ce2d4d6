# Builds the consumer with Formwork taken in from its source tree (add_subdirectory or
# FetchContent, as WAY says) in a fresh temporary directory, runs it, and checks its report.
#
# Variables: FORMWORK_SOURCE_DIR, CONSUMER_SOURCE_DIR, SUBPROJECT_SOURCE_DIR, CXX_COMPILER, WAY.

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/Consume.cmake)

formwork_start_consumer_script(${WAY})

# Unoptimised: the library is compiled afresh here, and only whether it builds and links as a
# subproject is in question.
set(BUILD_TYPE "")
set(prefix "")
consume(${SUBPROJECT_SOURCE_DIR} ${work} consumer -DFORMWORK_WAY=${WAY}
    -DFORMWORK_SOURCE_DIR=${FORMWORK_SOURCE_DIR} -DCONSUMER_SOURCE_DIR=${CONSUMER_SOURCE_DIR})
formwork_check_consumer_output("${last_output}")
file(REMOVE_RECURSE ${work})
