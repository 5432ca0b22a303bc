# SPDX-License-Identifier: Apache-2.0
# Every public header compiles alone, and twice over, under the standard that its users may build with. So do the
# headers of modules.

# plex_compile_headers(TARGET HEADER…): a library of one source for each header.
function(plex_compile_headers target)
    add_library(${target} OBJECT)
    foreach(header IN LISTS ARGN)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}/${header}.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n#include <${header}>\n")
        target_sources(${target} PRIVATE ${source})
    endforeach()
    target_link_libraries(${target} PRIVATE plex-warnings)
    target_compile_options(${target} PRIVATE -O0 -g0) # nobody runs it
endfunction()

# plex_reaches(RESULT HEADER DIRECTORY): whether one of the project's headers includes Generation.hpp, itself or
# through others of the project.
function(plex_reaches result header directory)
    set(${result} FALSE PARENT_SCOPE)
    if(header STREQUAL "plex/fastdds/Generation.hpp")
        set(${result} TRUE PARENT_SCOPE)
        return()
    endif()
    unset(path)
    find_file(path ${header} PATHS ${directory} ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}
              NO_DEFAULT_PATH NO_CACHE)
    if(NOT path)
        return() # another's
    endif()
    cmake_path(GET path PARENT_PATH directory)
    file(STRINGS ${path} includes REGEX "^#include [<\"]")
    foreach(include IN LISTS includes)
        string(REGEX REPLACE "^#include [<\"]([^>\"]+).*" "\\1" included "${include}")
        plex_reaches(reached ${included} ${directory})
        if(reached)
            set(${result} TRUE PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

set(list ${CMAKE_CURRENT_SOURCE_DIR}/public-headers.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
file(STRINGS ${list} publicHeaders REGEX "\\.hpp$")
list(TRANSFORM publicHeaders REPLACE "^plex/network-uri/" "")
set(bindingHeaders ${publicHeaders})
list(FILTER bindingHeaders INCLUDE REGEX "^plex/(fastdds|module|ps)/")
set(applicationHeaders ${publicHeaders})
list(REMOVE_ITEM applicationHeaders ${bindingHeaders})
file(GLOB_RECURSE moduleHeaders CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
     ${PROJECT_SOURCE_DIR}/generated/*.hpp)

plex_compile_headers(application-headers ${applicationHeaders})
set_target_properties(application-headers PROPERTIES CXX_STANDARD 17)
target_link_libraries(application-headers PRIVATE plex::plex plex::icd-vexstubif plex::dds)

# To read Fast DDS takes nine tenths of the time. A header that includes Generation.hpp in any case stands alone
# just as well when that is precompiled.
set(plainHeaders plex/fastdds/Generation.hpp)
set(fastddsHeaders)
foreach(header IN LISTS bindingHeaders moduleHeaders)
    plex_reaches(reached ${header} ${PROJECT_SOURCE_DIR})
    if(reached)
        list(APPEND fastddsHeaders ${header})
    else()
        list(APPEND plainHeaders ${header})
    endif()
endforeach()
list(REMOVE_ITEM fastddsHeaders plex/fastdds/Generation.hpp)

plex_compile_headers(binding-headers ${plainHeaders})
plex_compile_headers(fastdds-headers ${fastddsHeaders})
target_precompile_headers(fastdds-headers PRIVATE <plex/fastdds/Generation.hpp>)
foreach(target IN ITEMS binding-headers fastdds-headers)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target} PRIVATE plex-dds-engine plex::icd-vexstubif)
endforeach()

# What is installed is what is listed, so that a header becomes public, or ceases to be, on purpose only.
add_test(NAME PublicHeaders.AreTheCommittedOnes
         COMMAND ${CMAKE_COMMAND} -DBUILD=${PROJECT_BINARY_DIR} -DINCLUDE=${CMAKE_INSTALL_INCLUDEDIR}
                 -DBUNDLED_URI=${PLEX_BUNDLED_NETWORK_URI} -DLIST=${list}
                 -P ${CMAKE_CURRENT_SOURCE_DIR}/CheckPublicHeaders.cmake)

# What applications include names no header of DDS, not even through another header.
set(allHeaders ${CMAKE_CURRENT_BINARY_DIR}/AllApplicationHeaders.cpp)
list(FILTER applicationHeaders EXCLUDE REGEX "^plex/dds/")
list(JOIN applicationHeaders ">\n#include <" includes)
file(CONFIGURE OUTPUT ${allHeaders} CONTENT "#include <${includes}>\n")
add_test(NAME ApplicationHeaders.IncludeNoDdsHeader
         COMMAND ${CMAKE_CXX_COMPILER} -std=c++17 -M
                 -I$<JOIN:$<TARGET_PROPERTY:plex-icd-vexstubif,INTERFACE_INCLUDE_DIRECTORIES>,$<SEMICOLON>-I> ${allHeaders}
         COMMAND_EXPAND_LISTS)
set_tests_properties(ApplicationHeaders.IncludeNoDdsHeader PROPERTIES
                     PASS_REGULAR_EXPRESSION "/plex/Plex\\.hpp"
                     FAIL_REGULAR_EXPRESSION "/fast(dds|cdr|rtps)/;fatal error")
