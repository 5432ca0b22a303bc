# SPDX-License-Identifier: Apache-2.0
# Run when a module was generated: cmake -D MODULE=… -D OUTPUT=… -P … -- GENERATOR ARGUMENT…. Its topics must be in the C++
# namespace by which the transport finds its library. Writes the list of its headers.

set(command)
foreach(i RANGE ${CMAKE_ARGC})
    if(DEFINED isCommand AND i LESS CMAKE_ARGC)
        list(APPEND command ${CMAKE_ARGV${i}})
    elseif("${CMAKE_ARGV${i}}" STREQUAL "--")
        set(isCommand TRUE)
    endif()
endforeach()

execute_process(COMMAND ${command} --list OUTPUT_VARIABLE verdicts ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "topic  [^ ]+" topics "${verdicts}")
foreach(topic IN LISTS topics)
    string(REGEX REPLACE "^topic  (.+)::([^:]+)$" "\\1" scope "${topic}")
    string(REPLACE "::" "_" module "${scope}")
    if(NOT module STREQUAL MODULE)
        string(REPLACE "topic  " "" topic "${topic}")
        message(FATAL_ERROR "plex_add_module(${MODULE}): the topic ${topic} is of the module ${scope}, whose library has "
                            "another name; call plex_add_module(${module} …) for it")
    endif()
endforeach()

file(GLOB_RECURSE headers ${OUTPUT}/include/*.hpp)
list(JOIN headers "\n" text)
set(written)
if(EXISTS ${OUTPUT}/headers.txt)
    file(READ ${OUTPUT}/headers.txt written)
endif()
if(NOT written STREQUAL "${text}\n")
    file(WRITE ${OUTPUT}/headers.txt "${text}\n")
endif()
