# SPDX-License-Identifier: Apache-2.0
# Compares the headers that are installed with the committed list. Arguments: BUILD, INCLUDE, BUNDLED_URI, LIST.

file(REAL_PATH ${CMAKE_CURRENT_BINARY_DIR} here)
set(prefix ${here}/public-headers)
file(REMOVE_RECURSE ${prefix})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed RELATIVE ${prefix}/${INCLUDE} ${prefix}/${INCLUDE}/*)
file(REMOVE_RECURSE ${prefix})
list(SORT installed)

file(STRINGS ${LIST} expected)
if(NOT BUNDLED_URI) # cpp-netlib's own is used
    list(REMOVE_ITEM expected plex/network-uri/network/uri.hpp)
endif()
if(NOT installed STREQUAL expected)
    get_filename_component(name ${LIST} NAME)
    list(JOIN installed "\n" actual)
    file(WRITE ${here}/${name}.actual "${actual}\n")
    execute_process(COMMAND diff -u ${LIST} ${here}/${name}.actual)
    message(FATAL_ERROR "The public headers differ; where that is meant, copy ${here}/${name}.actual to ${LIST}")
endif()
