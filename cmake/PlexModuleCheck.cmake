# SPDX-License-Identifier: Apache-2.0
# Run when a module was generated: cmake -D MODULE=… -D OUTPUT=… -D OTHERS=… -P …, with the output directories of the modules
# that it uses, | between them. Some of its topics must be in the C++ namespace by which the transport finds its library, or
# within that. Writes the lists of its headers, and of the modules for which links to the library are made.

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

file(GLOB_RECURSE headers ${OUTPUT}/include/*.hpp)
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
