# SPDX-License-Identifier: Apache-2.0
# The installed tree: headers, libraries, profiles and the CMake package. No absolute path is in it, so it
# can be moved.

include(CMakePackageConfigHelpers)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/plex)

if(PLEX_PLATFORM STREQUAL "bundled")
    install(TARGETS plex-common plex plex-icd-vexstubif plex-dds EXPORT plexTargets LIBRARY)
    install(DIRECTORY platform/plex-common/include/ platform/plex-dds/include/ platform/plex-icd-vexstubif/include/
            TYPE INCLUDE)
    if(PLEX_BUNDLED_NETWORK_URI)
        install(DIRECTORY platform/plex-common/network-uri/include/
                DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/plex/network-uri)
    else()
        install(FILES cmake/Findnetwork-uri.cmake DESTINATION ${packageDir})
    endif()
endif()
install(TARGETS plex-dds-vexstubif EXPORT plexTargets LIBRARY)
if(PLEX_BUILD_TOOLS)
    install(TARGETS plex-idl EXPORT plexTargets RUNTIME)
endif()
if(TARGET plex-program)
    install(TARGETS plex-program RUNTIME)
    set(texts ${PROJECT_BINARY_DIR}/tools/plex/texts)
    install(DIRECTORY ${texts}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR})
    install(FILES ${texts}/bash/plex DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${texts}/fish/plex.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
    install(FILES ${texts}/zsh/_plex DESTINATION ${PLEX_ZSH_COMPLETIONS_DIR})
endif()
install(TARGETS plex-dds-engine EXPORT plexEngineTargets LIBRARY)
install(DIRECTORY include/ TYPE INCLUDE)
install(DIRECTORY profiles/ DESTINATION ${CMAKE_INSTALL_DATADIR}/plex)
install(EXPORT plexTargets NAMESPACE plex:: DESTINATION ${packageDir})
install(EXPORT plexEngineTargets NAMESPACE plex:: DESTINATION ${packageDir})

configure_package_config_file(cmake/plex-config.cmake.in ${PROJECT_BINARY_DIR}/plex-config.cmake
                              INSTALL_DESTINATION ${packageDir} PATH_VARS CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/plex-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/plex-config.cmake ${PROJECT_BINARY_DIR}/plex-config-version.cmake
              cmake/PlexModule.cmake cmake/PlexModuleCheck.cmake cmake/PlexModuleLinks.cmake
              cmake/plex-module-config.cmake.in
        DESTINATION ${packageDir})
