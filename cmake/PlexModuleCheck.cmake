# SPDX-License-Identifier: Apache-2.0
# Run when a module was generated: cmake -D MODULE=… -D OUTPUT=… -D OTHERS=… -P …, with the output directories of the modules
# that it uses, | between them. Some of its topics must be in the C++ namespace by which the transport finds its library, or
# within that. Writes the lists of its headers, and of the modules for which links to the library are made. Headers of topics
# that are there no more are removed, so that nobody includes them.

cmake_policy(VERSION 3.25)

# write_if_other(FILE TEXT): leaves a file alone that has the text.
function(write_if_other file text)
    set(written)
    if(EXISTS ${file})
        file(READ ${file} written)
    endif()
    if(NOT EXISTS ${file} OR NOT written STREQUAL text)
        file(WRITE ${file} "${text}")
    endif()
endfunction()

file(STRINGS ${OUTPUT}/dds/modules.txt modules)
set(own "${modules}")
list(FILTER own INCLUDE REGEX "^${MODULE}(_|$)")
if(modules AND NOT own)
    list(GET modules 0 module)
    message(FATAL_ERROR "plex_add_module(${MODULE}): the topics are of the module ${module}, whose library has another name; "
                        "call plex_add_module(${module} …) for them")
endif()
list(REMOVE_ITEM modules ${MODULE})
list(JOIN modules "\n" text)
write_if_other(${OUTPUT}/links.txt "${text}")

# A topic's header is called as its source is, in the folder of the outermost module.
file(STRINGS ${OUTPUT}/src/shard0.cpp sources REGEX "^#include")
list(TRANSFORM sources REPLACE "^#include \"(.*)[.]cpp\"$" "\\1.hpp")
set(before)
if(EXISTS ${OUTPUT}/headers.txt)
    file(STRINGS ${OUTPUT}/headers.txt before ENCODING UTF-8)
endif()
file(GLOB_RECURSE headers ${OUTPUT}/include/*.hpp)
foreach(header IN LISTS headers)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${OUTPUT}/include OUTPUT_VARIABLE name)
    string(REGEX REPLACE "^[^/]*/(.*)$" "\\1" withinModule ${name})
    if(NOT name IN_LIST sources AND NOT withinModule IN_LIST sources AND NOT withinModule STREQUAL Values.hpp)
        list(REMOVE_ITEM headers ${header})
        if(header IN_LIST before)
            file(REMOVE ${header})
        endif()
    endif()
endforeach()
list(JOIN headers "\n" text)
write_if_other(${OUTPUT}/headers.txt "${text}\n")

string(REPLACE "|" ";" others "${OTHERS}")
foreach(header IN LISTS headers)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${OUTPUT}/include OUTPUT_VARIABLE name)
    foreach(other IN LISTS others)
        if(EXISTS ${other}/include/${name})
            message(FATAL_ERROR "plex_add_module(${MODULE}): there is a header <${name}> of another module, too, in ${other}; "
                                "put the definitions of both into one call, which may have topics of several modules")
        endif()
    endforeach()
endforeach()
