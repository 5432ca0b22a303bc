# SPDX-License-Identifier: Apache-2.0
# Every public header compiles alone, and twice over, under the standard that its users may build with.

# plex_compile_headers(TARGET ROOT HEADER…): one source for each header, named relative to the root.
function(plex_compile_headers target)
    foreach(header IN LISTS ARGN)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}/${header}.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n#include <${header}>\n")
        target_sources(${target} PRIVATE ${source})
    endforeach()
    target_link_libraries(${target} PRIVATE plex-warnings)
endfunction()

set(includeDir ${PROJECT_SOURCE_DIR}/include)
file(GLOB contractHeaders CONFIGURE_DEPENDS RELATIVE ${includeDir} ${includeDir}/plex/*.hpp)
file(GLOB_RECURSE engineHeaders CONFIGURE_DEPENDS RELATIVE ${includeDir} ${includeDir}/plex/ps/*.hpp)
file(GLOB_RECURSE moduleHeaders CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
     ${PROJECT_SOURCE_DIR}/generated/*.hpp)
foreach(library IN ITEMS common icd-vexstubif dds)
    set(includeDir ${PROJECT_SOURCE_DIR}/platform/plex-${library}/include)
    file(GLOB_RECURSE ${library}Headers CONFIGURE_DEPENDS RELATIVE ${includeDir} ${includeDir}/*.hpp)
endforeach()
set(applicationHeaders ${contractHeaders} ${commonHeaders} ${icd-vexstubifHeaders} network/uri.hpp)

add_library(application-headers OBJECT)
set_target_properties(application-headers PROPERTIES CXX_STANDARD 17)
target_link_libraries(application-headers PRIVATE plex::plex plex::icd-vexstubif plex::dds)
plex_compile_headers(application-headers ${applicationHeaders} ${ddsHeaders})

add_library(binding-headers OBJECT)
target_include_directories(binding-headers PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(binding-headers PRIVATE plex-engine plex::icd-vexstubif)
plex_compile_headers(binding-headers ${engineHeaders} ${moduleHeaders})

# What applications include names no header of DDS, not even through another header.
set(allHeaders ${CMAKE_CURRENT_BINARY_DIR}/AllApplicationHeaders.cpp)
list(JOIN applicationHeaders ">\n#include <" includes)
file(CONFIGURE OUTPUT ${allHeaders} CONTENT "#include <${includes}>\n")
add_test(NAME ApplicationHeaders.IncludeNoDdsHeader
         COMMAND ${CMAKE_CXX_COMPILER} -std=c++17 -M
                 -I$<JOIN:$<TARGET_PROPERTY:plex-icd-vexstubif,INTERFACE_INCLUDE_DIRECTORIES>,$<SEMICOLON>-I> ${allHeaders}
         COMMAND_EXPAND_LISTS)
set_tests_properties(ApplicationHeaders.IncludeNoDdsHeader PROPERTIES
                     PASS_REGULAR_EXPRESSION "/plex/Plex\\.hpp"
                     FAIL_REGULAR_EXPRESSION "/fast(dds|cdr|rtps)/;fatal error")
