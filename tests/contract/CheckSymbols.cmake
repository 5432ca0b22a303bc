# SPDX-License-Identifier: Apache-2.0
# Compares what a library exports of the project's with the committed list. Arguments: NM, LIBRARY, LIST.
#
# Listed are the functions that stand in a source file, and the classes whose type information is shown:
# these follow from the sources alone. What compilers emit besides (tables, thunks, templates of other
# libraries) is theirs to choose.

execute_process(COMMAND ${NM} -D --defined-only -C ${LIBRARY}
                OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," output "${output}")
string(REPLACE "\n" ";" lines "${output}")

set(exported)
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[0-9a-f]+ (.) (.*)$" "\\2" symbol "${line}")
    set(kind "${CMAKE_MATCH_1}")
    string(REPLACE "eprosima::fastrtps::rtps::" "eprosima::fastdds::rtps::" symbol "${symbol}") # as Fast DDS 3 has it
    if(symbol MATCHES "lambda")
        continue() # compilers name them differently
    endif()
    if(symbol MATCHES "^typeinfo for ovra::plex::ps::(Configured|Observable)Entity$")
        continue() # the engine's; builds with sanitizers have these wherever they look at an object of the class
    endif()
    if(symbol MATCHES "^typeinfo for (ovra|generated|vexstubif)::" OR
       (kind STREQUAL "T" AND NOT symbol MATCHES "thunk to "))
        list(APPEND exported "${symbol}")
    endif()
endforeach()
list(REMOVE_DUPLICATES exported) # constructors and destructors have several symbols of one name
list(SORT exported)
string(REPLACE ";" "\n" actual "${exported}\n")

file(READ ${LIST} expected)
if(NOT actual STREQUAL expected)
    get_filename_component(name ${LIST} NAME)
    set(actualFile ${CMAKE_CURRENT_BINARY_DIR}/${name}.actual)
    file(WRITE ${actualFile} "${actual}")
    execute_process(COMMAND diff -u ${LIST} ${actualFile})
    message(FATAL_ERROR "The exported symbols differ; where that is meant, copy ${actualFile} to ${LIST}")
endif()
