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

# Processors fetch code in blocks of 32 bytes or more, so functions begin at them. Calls into other libraries go without
# the table of jumps in between, which falls out of the caches while a process waits. Nobody replaces this library's own
# functions, so they may be inlined although they are exported. docs/design.md has the figures.
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

# To read the headers of Fast DDS, and to make the engine's templates for a type, takes longer than to compile what most
# sources add to that. So a target's sources are compiled as one.
option(PLEX_UNITY_BUILD "Compile the sources of each library and test program together" ON)
function(plex_compile_together name)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ${PLEX_UNITY_BUILD} UNITY_BUILD_BATCH_SIZE 0)
endfunction()

# plex_add_library(NAME [OPENED_BY_NAME] SOURCE…): a shared library of the project, under the common settings.
#
# OPENED_BY_NAME: a transport or module, which is opened as lib<name>.so. It has no version in its soname, so that the
# loader knows a program's own copy by the name that it is asked for.
function(plex_add_library name)
    cmake_parse_arguments(arg "OPENED_BY_NAME" "" "" ${ARGN})
    add_library(${name} SHARED ${arg_UNPARSED_ARGUMENTS})
    plex_compile_together(${name})
    if(NOT arg_OPENED_BY_NAME) # before 1.0 a minor version may change what is exported
        set_target_properties(${name} PROPERTIES
            VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    endif()
    string(REGEX REPLACE "^plex-" "" exportName ${name})
    set_target_properties(${name} PROPERTIES EXPORT_NAME ${exportName})
    add_library(plex::${exportName} ALIAS ${name})
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:plex-warnings>)
    if(NOT PLEX_SANITIZE) # a sanitizer's symbols come with the program
        target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()
