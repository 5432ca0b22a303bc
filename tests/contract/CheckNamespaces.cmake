# SPDX-License-Identifier: Apache-2.0
# Fails where a library exports a name that is not one of the project's. Arguments: NM, LIBRARY.
#
# Weak symbols are templates and inline functions, of which those of other libraries are exported too.

execute_process(COMMAND ${NM} -D --defined-only -C ${LIBRARY}
                OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," output "${output}")
string(REPLACE "\n" ";" lines "${output}")

set(own "(ovra|generated|vexstubif|network)::")
set(others "(std|__gnu_cxx|boost|eprosima|foonathan|log4cplus|network)::")
set(plain "^(generated_dds_[A-Za-z]+_vexstubif_[A-Za-z]+|plex_create_transport_[a-z]+|__odr_asan.*)$")
set(strays)
foreach(line IN LISTS lines)
    if(NOT line MATCHES "^[0-9a-f]+ (.) (.*)$")
        continue()
    endif()
    set(kind "${CMAKE_MATCH_1}")
    set(symbol "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "^((typeinfo|typeinfo name|vtable|VTT|construction vtable|guard variable) for|(virtual|non-virtual) thunk to) "
           "" name "${symbol}")
    if(name MATCHES "^${own}" OR name MATCHES "${plain}" OR
       name MATCHES "eprosima::fastcdr::[a-z_]+(<.*>)?\\(.*generated::dds_::vexstubif::" OR
       (kind MATCHES "[VWu]" AND name MATCHES "(^|[ (])${others}"))
        continue()
    endif()
    list(APPEND strays "${kind} ${symbol}")
endforeach()
if(strays)
    list(JOIN strays "\n  " text)
    message(FATAL_ERROR "Names outside the project's namespaces are exported:\n  ${text}")
endif()
