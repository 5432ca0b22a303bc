# SPDX-License-Identifier: Apache-2.0
# What the libraries show to the dynamic loader.

if(PLEX_COVERAGE) # without optimisation, they show the standard library's templates as well
    return()
endif()

add_test(NAME Symbols.OfTheModuleLibraryAreTheCommittedOnes
         COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DLIBRARY=$<TARGET_FILE:plex-dds-vexstubif>
                 -DLIST=${CMAKE_CURRENT_SOURCE_DIR}/symbols-vexstubif.txt
                 -P ${CMAKE_CURRENT_SOURCE_DIR}/CheckSymbols.cmake)

foreach(library IN ITEMS plex-common plex plex-icd-vexstubif plex-dds plex-dds-vexstubif)
    add_test(NAME Symbols.NoneIsOutsideTheNamespacesIn_${library}
             COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DLIBRARY=$<TARGET_FILE:${library}>
                     -P ${CMAKE_CURRENT_SOURCE_DIR}/CheckNamespaces.cmake)
endforeach()
