# SPDX-License-Identifier: Apache-2.0
# How the project's own targets are compiled. Nothing here reaches a consumer.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# All libraries lie side by side, in the build tree as when installed: that is where they look for one
# another, and where the middleware finds the transport and the transport the modules.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH $ORIGIN)
set(CMAKE_INSTALL_RPATH $ORIGIN)

# Processors fetch code in blocks of 32 bytes or more. Code that is not touched costs up to 4 % more or less
# by where it comes to lie from one build to the next; with functions at these blocks, builds were at the lower end.
# Calls into other libraries go without the table of jumps in between: it is code that falls out of the caches
# while a process waits for the next value (builds with and without it, measured in turns: a callback took 1.033
# instead of 1.045 of a bare listener). Nobody replaces this library's own functions, so they may be inlined although
# they are exported (a loaned read: 1.143 instead of 1.159 of a bare one).
add_compile_options(-falign-functions=32 -fno-plt -fno-semantic-interposition)

add_library(plex-warnings INTERFACE)
target_compile_options(plex-warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
    -Wcast-qual -Wundef -Wnull-dereference -Wformat=2)

if(PLEX_SANITIZE)
    add_compile_options(-fsanitize=${PLEX_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${PLEX_SANITIZE})
    if(PLEX_SANITIZE MATCHES undefined)
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()

if(PLEX_COVERAGE)
    # Threads count without a lock otherwise, and lose counts.
    add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
    add_link_options(--coverage)
    target_sources(plex-warnings INTERFACE $<BUILD_INTERFACE:${CMAKE_CURRENT_LIST_DIR}/FlushCoverage.cpp>)
endif()
if(PLEX_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link) # libFuzzer's view of what an input reaches
endif()

# A shared library of the project, built from its sources under the common settings.
function(plex_add_library name)
    add_library(${name} SHARED ${ARGN})
    string(REGEX REPLACE "^plex-" "" exportName ${name})
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${exportName})
    add_library(plex::${exportName} ALIAS ${name})
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:plex-warnings>)
    if(NOT PLEX_SANITIZE) # a sanitizer's symbols come with the program
        target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()
