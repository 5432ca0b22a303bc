# SPDX-License-Identifier: Apache-2.0
# Interface modules from their definitions.
#
# plex_add_module(NAME IDL FILE… [INCLUDE DIRECTORY…] [DEFINE NAME[=VALUE]…] [MODULES NAME…]
#                 [EXTENSIBILITY final|appendable|mutable] [TOPICS auto|annotated|all] [TYPE_NAME PATTERN]
#                 [ENUM_DELIMITERS none|standard] [KEY_HASH xcdr1|xcdr2] [SHARDS N] [OUTPUT_DIRECTORY DIRECTORY])
#
# makes two libraries: plex::icd-NAME, the value types (C++17), which applications link, and plex::dds-NAME, their binding
# to DDS, which the transport opens by its name. NAME is the module's, a_b for a::b. MODULES are those whose definitions
# the files include, made by this function too. Sources lie in OUTPUT_DIRECTORY (default: NAME in the build directory);
# the binding is compiled in as many pieces as SHARDS says (default 8).
#
# plex_install_module(NAME) installs the headers, the libraries and the definitions.
#
# The generator is the target plex::idl, or what the variable PLEX_IDL names, for cross compiling.

cmake_policy(PUSH)
cmake_policy(VERSION 3.25)

include(GNUInstallDirs)

function(plex_add_module name)
    cmake_parse_arguments(PARSE_ARGV 1 arg ""
                          "EXTENSIBILITY;TOPICS;TYPE_NAME;ENUM_DELIMITERS;KEY_HASH;SHARDS;OUTPUT_DIRECTORY"
                          "IDL;INCLUDE;DEFINE;MODULES")
    if(NOT arg_IDL OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "plex_add_module(${name}): IDL must name files, and \"${arg_UNPARSED_ARGUMENTS}\" is nothing "
                            "that it knows")
    endif()
    if(NOT arg_SHARDS)
        set(arg_SHARDS 8)
    endif()
    if(NOT arg_OUTPUT_DIRECTORY)
        set(arg_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${name})
    endif()
    cmake_path(ABSOLUTE_PATH arg_OUTPUT_DIRECTORY BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} OUTPUT_VARIABLE output)

    set(generator $<TARGET_FILE:plex::idl>)
    set(generatorDependency plex::idl)
    if(PLEX_IDL)
        set(generator ${PLEX_IDL})
        set(generatorDependency ${PLEX_IDL})
    endif()

    set(definitions)
    foreach(file IN LISTS arg_IDL)
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
        list(APPEND definitions ${file})
    endforeach()
    set(options)
    foreach(module IN LISTS arg_MODULES)
        get_target_property(directories plex::icd-${module} PLEX_IDL_DIRECTORIES)
        list(APPEND arg_INCLUDE ${directories})
    endforeach()
    foreach(directory IN LISTS arg_INCLUDE)
        cmake_path(ABSOLUTE_PATH directory BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
        list(APPEND options -I ${directory})
    endforeach()
    foreach(definition IN LISTS arg_DEFINE)
        list(APPEND options -D ${definition})
    endforeach()
    foreach(option IN ITEMS extensibility topics type-name enum-delimiters key-hash)
        string(TOUPPER ${option} argument)
        string(REPLACE "-" "_" argument ${argument})
        if(arg_${argument})
            list(APPEND options --${option} ${arg_${argument}})
        endif()
    endforeach()

    set(shards)
    math(EXPR last "${arg_SHARDS} - 1")
    foreach(i RANGE ${last})
        list(APPEND shards ${output}/dds/shard${i}.cpp)
    endforeach()
    add_custom_command(
        OUTPUT ${shards} ${output}/src/shard0.cpp
        COMMAND ${generator} ${definitions} -o ${output} --shards ${arg_SHARDS} --depfile ${output}/${name}.d ${options}
        DEPENDS ${definitions} ${generatorDependency}
        DEPFILE ${output}/${name}.d
        COMMENT "Generating the module ${name}"
        VERBATIM)
    # Two libraries are made of what one command writes.
    add_custom_target(plex-generate-${name} DEPENDS ${shards} ${output}/src/shard0.cpp)

    add_library(plex-icd-${name} SHARED ${output}/src/shard0.cpp)
    add_library(plex::icd-${name} ALIAS plex-icd-${name})
    add_dependencies(plex-icd-${name} plex-generate-${name})
    target_compile_features(plex-icd-${name} PUBLIC cxx_std_17)
    target_include_directories(plex-icd-${name} PUBLIC
        $<BUILD_INTERFACE:${output}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(plex-icd-${name} PUBLIC plex::plex)

    add_library(plex-dds-${name} SHARED ${shards})
    add_library(plex::dds-${name} ALIAS plex-dds-${name})
    add_dependencies(plex-dds-${name} plex-generate-${name})
    target_link_libraries(plex-dds-${name} PUBLIC plex-icd-${name} PRIVATE plex::engine)
    foreach(module IN LISTS arg_MODULES)
        target_link_libraries(plex-icd-${name} PUBLIC plex::icd-${module})
    endforeach()

    set(directories)
    foreach(file IN LISTS definitions)
        cmake_path(GET file PARENT_PATH directory)
        list(APPEND directories ${directory})
    endforeach()
    list(REMOVE_DUPLICATES directories)
    foreach(kind IN ITEMS icd dds)
        set_target_properties(plex-${kind}-${name} PROPERTIES
            EXPORT_NAME ${kind}-${name} CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON UNITY_BUILD OFF
            INSTALL_RPATH $ORIGIN)
    endforeach()
    set_target_properties(plex-icd-${name} PROPERTIES
        PLEX_IDL_DIRECTORIES "${directories}" PLEX_IDL_FILES "${definitions}" PLEX_OUTPUT_DIRECTORY ${output})
endfunction()

function(plex_install_module name)
    get_target_property(output plex-icd-${name} PLEX_OUTPUT_DIRECTORY)
    get_target_property(definitions plex-icd-${name} PLEX_IDL_FILES)
    install(TARGETS plex-icd-${name} plex-dds-${name} EXPORT plex-${name}-targets LIBRARY)
    install(DIRECTORY ${output}/include/ TYPE INCLUDE)
    install(FILES ${definitions} DESTINATION ${CMAKE_INSTALL_DATADIR}/plex/idl/${name})
    install(EXPORT plex-${name}-targets NAMESPACE plex:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/plex-${name})
endfunction()

cmake_policy(POP)
