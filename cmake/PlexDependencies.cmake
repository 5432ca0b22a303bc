# SPDX-License-Identifier: Apache-2.0
# What is installed and called.

find_package(Boost 1.81 CONFIG REQUIRED COMPONENTS headers url)
find_package(log4cplus CONFIG REQUIRED)
find_package(fastcdr 2 CONFIG REQUIRED)
find_package(Threads REQUIRED)

# Fast DDS goes by the name fastrtps up to generation 2 and fastdds from generation 3 on. The first one on
# CMAKE_PREFIX_PATH is taken; where none is there, the system's.
function(plex_find_fastdds)
    foreach(prefix IN LISTS CMAKE_PREFIX_PATH)
        find_package(fastdds 3.1 CONFIG QUIET PATHS ${prefix} NO_DEFAULT_PATH GLOBAL)
        if(NOT fastdds_FOUND)
            find_package(fastrtps 2.14 CONFIG QUIET PATHS ${prefix} NO_DEFAULT_PATH GLOBAL)
        endif()
        if(fastdds_FOUND OR fastrtps_FOUND)
            break()
        endif()
    endforeach()
    if(NOT fastdds_FOUND AND NOT fastrtps_FOUND)
        find_package(fastdds 3.1 CONFIG QUIET GLOBAL)
    endif()
    if(NOT fastdds_FOUND AND NOT fastrtps_FOUND)
        find_package(fastrtps 2.14 CONFIG QUIET GLOBAL)
    endif()
    if(fastdds_FOUND)
        set(PLEX_FASTDDS_TARGET fastdds PARENT_SCOPE)
        message(STATUS "Fast DDS: ${fastdds_VERSION} (${fastdds_DIR})")
    elseif(fastrtps_FOUND)
        set(PLEX_FASTDDS_TARGET fastrtps PARENT_SCOPE)
        message(STATUS "Fast DDS: ${fastrtps_VERSION} (${fastrtps_DIR})")
    else()
        message(FATAL_ERROR "Neither fastdds (3.1 or later) nor fastrtps (2.14 or later) was found; "
                            "say where it is with CMAKE_PREFIX_PATH")
    endif()
endfunction()

string(REPLACE ":" ";" prefixesOfEnvironment "$ENV{CMAKE_PREFIX_PATH}")
list(APPEND CMAKE_PREFIX_PATH ${prefixesOfEnvironment})
plex_find_fastdds()

# network::uri: cpp-netlib's where it is installed, else the project's own class of that name.
find_package(network-uri MODULE QUIET)
if(network-uri_FOUND)
    set(PLEX_BUNDLED_NETWORK_URI OFF)
    message(STATUS "network::uri: ${network-uri_LIBRARY}")
else()
    set(PLEX_BUNDLED_NETWORK_URI ON)
    message(STATUS "network::uri: bundled")
endif()
