# SPDX-License-Identifier: Apache-2.0
# Interface modules from their definitions.
#
# plex_add_module(NAME IDL FILE… [INCLUDE DIRECTORY…] [DEFINE NAME[=VALUE]…] [MODULES NAME…]
#                 [EXTENSIBILITY final|appendable|mutable] [TOPICS auto|annotated|all|none] [TYPE_NAME PATTERN]
#                 [ENUM_DELIMITERS none|standard] [KEY_HASH xcdr1|xcdr2] [SHARDS N] [OUTPUT_DIRECTORY DIRECTORY])
#
# makes two libraries: plex::icd-NAME, the value types (C++17), which applications link, and plex::dds-NAME, their binding
# to DDS, which the transport opens by its name. NAME is the module's, a_b for a::b; topics of other modules in the files are
# found by links beside the binding. MODULES are those whose definitions the files include, made by this function too,
# here or in a package that was found. Sources lie in OUTPUT_DIRECTORY (default: NAME in the build directory); the
# binding is compiled in as many pieces as SHARDS says (default: one for every four structures of the files).
#
# plex_install_module(NAME) installs the headers, the libraries and the definitions, and a package plex-NAME, by which
# other projects find the module. Its version is the project's.
#
# The generator is the target plex::idl, or the program that the variable PLEX_IDL names, for cross compiling.

cmake_policy(PUSH)
cmake_policy(VERSION 3.25)

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# What of the arguments of plex_add_module() can not be: an error that says so.
function(plex_check_module_arguments name)
    cmake_parse_arguments(PARSE_ARGV 1 arg ""
                          "EXTENSIBILITY;TOPICS;TYPE_NAME;ENUM_DELIMITERS;KEY_HASH;SHARDS;OUTPUT_DIRECTORY"
                          "IDL;INCLUDE;DEFINE;MODULES")
    set(call "plex_add_module(${name})")
    if(NOT name MATCHES "^[A-Za-z][A-Za-z0-9_]*$")
        message(FATAL_ERROR "${call}: a module's name has letters, digits and underscores; that of a::b is a_b")
    endif()
    if(arg_UNPARSED_ARGUMENTS)
        list(JOIN arg_UNPARSED_ARGUMENTS " " unknown)
        set(hint)
        if(NOT arg_IDL)
            set(hint "; definitions are named behind IDL")
        endif()
        message(FATAL_ERROR "${call}: \"${unknown}\" is no argument of it${hint}")
    endif()
    if(arg_KEYWORDS_MISSING_VALUES)
        list(JOIN arg_KEYWORDS_MISSING_VALUES ", " missing)
        message(FATAL_ERROR "${call}: there is nothing behind ${missing}")
    endif()
    if(NOT arg_IDL)
        message(FATAL_ERROR "${call}: there is no definition; name its files behind IDL")
    endif()
    if(TARGET plex::icd-${name})
        message(FATAL_ERROR "${call}: there is a module of that name already; all its files belong into one call")
    endif()
    foreach(module IN LISTS arg_MODULES)
        if(module MATCHES "^plex-(.+)$")
            message(FATAL_ERROR "${call}: there is no module \"${module}\", which MODULES names; \"${module}\" is a "
                                "package, its module is called \"${CMAKE_MATCH_1}\"")
        elseif(NOT TARGET plex::icd-${module})
            message(FATAL_ERROR "${call}: there is no module \"${module}\", which MODULES names; before this call, make it "
                                "with plex_add_module(${module} …) or find it with find_package(plex-${module})")
        endif()
    endforeach()
    if(DEFINED arg_EXTENSIBILITY AND NOT arg_EXTENSIBILITY MATCHES "^(final|appendable|mutable)$")
        message(FATAL_ERROR "${call}: EXTENSIBILITY is final, appendable or mutable, not \"${arg_EXTENSIBILITY}\"")
    endif()
    if(DEFINED arg_TOPICS AND NOT arg_TOPICS MATCHES "^(auto|annotated|all|none)$")
        message(FATAL_ERROR "${call}: TOPICS is auto, annotated, all or none, not \"${arg_TOPICS}\"")
    endif()
    if(DEFINED arg_ENUM_DELIMITERS AND NOT arg_ENUM_DELIMITERS MATCHES "^(none|standard)$")
        message(FATAL_ERROR "${call}: ENUM_DELIMITERS is none or standard, not \"${arg_ENUM_DELIMITERS}\"")
    endif()
    if(DEFINED arg_KEY_HASH AND NOT arg_KEY_HASH MATCHES "^xcdr[12]$")
        message(FATAL_ERROR "${call}: KEY_HASH is xcdr1 or xcdr2, not \"${arg_KEY_HASH}\"")
    endif()
    if(DEFINED arg_SHARDS AND (NOT arg_SHARDS MATCHES "^[1-9][0-9]*$" OR arg_SHARDS GREATER 1000))
        message(FATAL_ERROR "${call}: SHARDS is a number from 1 to 1000, not \"${arg_SHARDS}\"")
    endif()
    foreach(file IN LISTS arg_IDL)
        set(given "${file}")
        get_source_file_property(generated ${file} GENERATED)
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
        if(NOT EXISTS ${file} AND NOT generated)
            set(hint)
            if(NOT given MATCHES "[./]")
                set(hint "; \"${given}\" is no argument of plex_add_module() either")
            endif()
            message(FATAL_ERROR "${call}: there is no file ${file}, which IDL names${hint}")
        elseif(IS_DIRECTORY ${file})
            message(FATAL_ERROR "${call}: ${file} is a folder; IDL names files")
        endif()
    endforeach()
endfunction()

# The generator: as the build runs it, what it depends on, and as it runs now, empty where it is yet to be built.
function(plex_find_generator name)
    set(now)
    if(PLEX_IDL)
        if(NOT EXISTS ${PLEX_IDL})
            message(FATAL_ERROR "plex_add_module(${name}): PLEX_IDL is \"${PLEX_IDL}\", and no such program is there")
        endif()
        set(now ${PLEX_IDL})
        set(generator ${PLEX_IDL})
        set(dependency ${PLEX_IDL})
    elseif(CMAKE_CROSSCOMPILING OR NOT TARGET plex::idl)
        message(FATAL_ERROR "plex_add_module(${name}): there is no generator for this machine; "
                            "say where a program plex-idl is that runs here, with PLEX_IDL")
    else()
        set(generator $<TARGET_FILE:plex::idl>)
        set(dependency plex::idl)
        get_target_property(imported plex::idl IMPORTED)
        if(imported)
            get_target_property(now plex::idl LOCATION)
        endif()
    endif()
    set(generator ${generator} PARENT_SCOPE)
    set(generatorDependency ${dependency} PARENT_SCOPE)
    set(generatorNow ${now} PARENT_SCOPE)
endfunction()

# In how many pieces a binding is compiled unless somebody says it. One of four topics takes a compiler about 0.8 GB and
# 20 seconds, so it is one for every four structures, as which of them are topics is not known before the generator runs.
function(plex_default_shards variable)
    set(structures 0)
    foreach(file IN LISTS ARGN)
        if(NOT EXISTS ${file}) # the build makes it
            math(EXPR structures "${structures} + 32")
            continue()
        endif()
        file(STRINGS ${file} lines REGEX "(^|[^A-Za-z0-9_])struct[ \t]")
        list(LENGTH lines count)
        math(EXPR structures "${structures} + ${count}")
    endforeach()
    math(EXPR shards "(${structures} + 3) / 4")
    if(shards LESS 1)
        set(shards 1)
    elseif(shards GREATER 1000)
        set(shards 1000)
    endif()
    set(${variable} ${shards} PARENT_SCOPE)
endfunction()

function(plex_add_module name)
    plex_check_module_arguments(${ARGV})
    cmake_parse_arguments(PARSE_ARGV 1 arg ""
                          "EXTENSIBILITY;TOPICS;TYPE_NAME;ENUM_DELIMITERS;KEY_HASH;SHARDS;OUTPUT_DIRECTORY"
                          "IDL;INCLUDE;DEFINE;MODULES")
    plex_find_generator(${name})
    if(NOT arg_OUTPUT_DIRECTORY)
        set(arg_OUTPUT_DIRECTORY ${name})
    endif()
    cmake_path(ABSOLUTE_PATH arg_OUTPUT_DIRECTORY BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} OUTPUT_VARIABLE output)

    set(definitions)
    set(directories) # in which those who include the definitions look
    foreach(file IN LISTS arg_IDL)
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
        cmake_path(GET file PARENT_PATH directory)
        list(APPEND definitions ${file})
        list(APPEND directories ${directory})
    endforeach()
    if(NOT arg_SHARDS)
        plex_default_shards(arg_SHARDS ${definitions})
    endif()
    set(includes)
    foreach(directory IN LISTS arg_INCLUDE)
        cmake_path(ABSOLUTE_PATH directory BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
        list(APPEND includes ${directory})
    endforeach()
    set(roots ${includes})
    foreach(module IN LISTS arg_MODULES)
        get_target_property(ofModule plex::icd-${module} PLEX_IDL_DIRECTORIES)
        if(ofModule)
            list(APPEND includes ${ofModule})
        endif()
    endforeach()
    list(APPEND directories ${includes})
    list(REMOVE_DUPLICATES directories)

    # Types that say nothing are what their own module has chosen.
    set(extensibilities)
    foreach(module IN LISTS arg_MODULES)
        get_target_property(ofModule plex::icd-${module} PLEX_EXTENSIBILITIES)
        if(ofModule)
            list(APPEND extensibilities ${ofModule})
        endif()
    endforeach()

    set(arguments ${definitions} -o ${output} --shards ${arg_SHARDS} --depfile ${output}/${name}.d)
    foreach(directory IN LISTS includes)
        list(APPEND arguments -I ${directory})
    endforeach()
    foreach(definition IN LISTS arg_DEFINE)
        list(APPEND arguments -D ${definition})
    endforeach()
    foreach(extensibility IN LISTS extensibilities)
        list(APPEND arguments --extensibility-in ${extensibility})
    endforeach()
    foreach(option IN ITEMS extensibility topics type-name enum-delimiters key-hash)
        string(TOUPPER ${option} argument)
        string(REPLACE "-" "_" argument ${argument})
        if(arg_${argument})
            list(APPEND arguments --${option} ${arg_${argument}})
        endif()
    endforeach()
    set(others)
    foreach(module IN LISTS arg_MODULES)
        get_target_property(ofModule plex::icd-${module} PLEX_OUTPUT_DIRECTORY)
        if(ofModule)
            list(APPEND others ${ofModule})
        endif()
    endforeach()
    list(JOIN others "|" others)
    set(check ${CMAKE_COMMAND} -D MODULE=${name} -D OUTPUT=${output} -D "OTHERS=${others}"
        -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/PlexModuleCheck.cmake)

    # Ninja looks at files before it runs anything. So that it compiles again what includes a header that is written anew
    # it has to know that the header is: which ones there are is in a list that the check writes. Where the generator is
    # yet to be built, that is known from the second build on.
    set(list ${output}/headers.txt)
    if(generatorNow AND NOT EXISTS ${list})
        execute_process(COMMAND ${generatorNow} ${arguments} RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
        if(result EQUAL 0)
            execute_process(COMMAND ${check} OUTPUT_QUIET ERROR_QUIET)
        endif()
    endif()
    if(NOT EXISTS ${list})
        file(WRITE ${list} "")
    endif()
    file(STRINGS ${list} headers ENCODING UTF-8)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})

    set(shards)
    math(EXPR last "${arg_SHARDS} - 1")
    foreach(i RANGE ${last})
        list(APPEND shards ${output}/dds/shard${i}.cpp)
    endforeach()
    add_custom_command(
        OUTPUT ${shards} ${output}/src/shard0.cpp
        BYPRODUCTS ${headers}
        COMMAND ${generator} ${arguments}
        COMMAND ${check}
        DEPENDS ${definitions} ${generatorDependency}
        DEPFILE ${output}/${name}.d
        COMMENT "Generating the module ${name}"
        VERBATIM)
    # Two libraries are made of what one command writes.
    add_custom_target(plex-generate-${name} DEPENDS ${shards} ${output}/src/shard0.cpp)
    foreach(module IN LISTS arg_MODULES)
        if(TARGET plex-generate-${module}) # whose headers the check looks at
            add_dependencies(plex-generate-${name} plex-generate-${module})
        endif()
    endforeach()

    add_library(plex-icd-${name} SHARED ${output}/src/shard0.cpp)
    target_compile_features(plex-icd-${name} PUBLIC cxx_std_17)
    target_include_directories(plex-icd-${name} PUBLIC
        $<BUILD_INTERFACE:${output}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(plex-icd-${name} PUBLIC plex::plex)
    foreach(module IN LISTS arg_MODULES)
        target_link_libraries(plex-icd-${name} PUBLIC plex::icd-${module})
    endforeach()

    add_library(plex-dds-${name} SHARED ${shards})
    target_link_libraries(plex-dds-${name} PUBLIC plex-icd-${name} PRIVATE plex::engine)
    # For debuggers lines, but no variables, in what nobody has written: that takes three quarters of the time to compile.
    target_compile_options(plex-dds-${name} PRIVATE
        $<$<AND:$<CXX_COMPILER_ID:GNU,Clang>,$<CONFIG:Debug,RelWithDebInfo>>:-g1>)
    add_custom_command(TARGET plex-dds-${name} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -D LIST=${output}/links.txt -D DIRECTORY=$<TARGET_FILE_DIR:plex-dds-${name}>
            -D LIBRARY=$<TARGET_FILE_NAME:plex-dds-${name}> -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/PlexModuleLinks.cmake
        VERBATIM)

    set(extensibility appendable)
    if(arg_EXTENSIBILITY)
        set(extensibility ${arg_EXTENSIBILITY})
    endif()
    foreach(file IN LISTS definitions)
        list(APPEND extensibilities ${file}=${extensibility})
    endforeach()

    set(searched $ORIGIN ${CMAKE_INSTALL_RPATH})
    foreach(kind IN ITEMS icd dds)
        add_library(plex::${kind}-${name} ALIAS plex-${kind}-${name})
        add_dependencies(plex-${kind}-${name} plex-generate-${name})
        set_target_properties(plex-${kind}-${name} PROPERTIES
            EXPORT_NAME ${kind}-${name} CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON UNITY_BUILD OFF
            INSTALL_RPATH "${searched}")
    endforeach()
    set_target_properties(plex-icd-${name} PROPERTIES
        PLEX_IDL_DIRECTORIES "${directories}" PLEX_IDL_FILES "${definitions}" PLEX_IDL_ROOTS "${roots}"
        PLEX_EXTENSIBILITY ${extensibility} PLEX_EXTENSIBILITIES "${extensibilities}"
        PLEX_OUTPUT_DIRECTORY ${output} PLEX_MODULES "${arg_MODULES}" PLEX_MODULE_VERSION "${PROJECT_VERSION}")
endfunction()

# Where a definition is installed, below the folder of its module's: as it lies in a directory that INCLUDE names, which is
# how others include it, else by its name.
function(plex_installed_definition file roots variable)
    cmake_path(GET file FILENAME path)
    foreach(root IN LISTS roots)
        cmake_path(IS_PREFIX root ${file} NORMALIZE isWithin)
        if(isWithin)
            cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${root} OUTPUT_VARIABLE path)
            break()
        endif()
    endforeach()
    set(${variable} ${path} PARENT_SCOPE)
endfunction()

# Installs the definitions of a module. Sets in `variable` below which folders they are included.
function(plex_install_definitions name folder variable)
    get_target_property(definitions plex-icd-${name} PLEX_IDL_FILES)
    get_target_property(roots plex-icd-${name} PLEX_IDL_ROOTS)
    set(installed)
    set(directories ${folder})
    foreach(file IN LISTS definitions)
        plex_installed_definition(${file} "${roots}" path)
        if(path IN_LIST installed)
            message(FATAL_ERROR "plex_install_module(${name}): two definitions would be installed as ${path}; name the "
                                "folder that both lie in behind INCLUDE of plex_add_module()")
        endif()
        list(APPEND installed ${path})
        cmake_path(GET path PARENT_PATH directory)
        cmake_path(APPEND folder ${directory} OUTPUT_VARIABLE destination)
        install(FILES ${file} DESTINATION ${destination})
        list(APPEND directories ${destination})
    endforeach()
    list(TRANSFORM directories REPLACE "/$" "")
    list(REMOVE_DUPLICATES directories)
    set(${variable} ${directories} PARENT_SCOPE)
endfunction()

function(plex_install_module name)
    if(ARGN)
        message(FATAL_ERROR "plex_install_module(${name}): \"${ARGN}\" is no argument of it")
    endif()
    if(NOT TARGET plex-icd-${name})
        message(FATAL_ERROR "plex_install_module(${name}): there is no module \"${name}\" of this project; "
                            "plex_add_module(${name} …) comes first")
    endif()
    get_target_property(output plex-icd-${name} PLEX_OUTPUT_DIRECTORY)
    get_target_property(PLEX_MODULES plex-icd-${name} PLEX_MODULES)
    get_target_property(PLEX_EXTENSIBILITY plex-icd-${name} PLEX_EXTENSIBILITY)
    get_target_property(version plex-icd-${name} PLEX_MODULE_VERSION)
    set(package plex-${name})
    set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/${package})

    install(TARGETS plex-icd-${name} plex-dds-${name} EXPORT ${package}-targets LIBRARY)
    install(CODE "
        set(LIST [[${output}/links.txt]])
        set(DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")
        set(LIBRARY $<TARGET_FILE_NAME:plex-dds-${name}>)
        include([[${CMAKE_CURRENT_FUNCTION_LIST_DIR}/PlexModuleLinks.cmake]])")
    install(DIRECTORY ${output}/include/ TYPE INCLUDE FILES_MATCHING PATTERN *.hpp)
    plex_install_definitions(${name} ${CMAKE_INSTALL_DATADIR}/plex/idl/${name} PLEX_IDL_DIRECTORIES)
    install(EXPORT ${package}-targets NAMESPACE plex:: DESTINATION ${packageDirectory})

    set(PLEX_DEPENDENCIES "find_dependency(plex ${plex_VERSION} CONFIG)\n")
    foreach(module IN LISTS PLEX_MODULES)
        get_target_property(versionOfModule plex::icd-${module} PLEX_MODULE_VERSION)
        string(APPEND PLEX_DEPENDENCIES "find_dependency(plex-${module} ${versionOfModule} CONFIG)\n")
    endforeach()
    list(JOIN PLEX_MODULES " " PLEX_MODULES)
    set(PLEX_MODULE ${name})
    set(PLEX_MODULE_VERSION ${version})
    list(TRANSFORM PLEX_IDL_DIRECTORIES PREPEND "\${PACKAGE_PREFIX_DIR}/")
    configure_package_config_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/plex-module-config.cmake.in
                                  ${output}/${package}-config.cmake INSTALL_DESTINATION ${packageDirectory})
    install(FILES ${output}/${package}-config.cmake DESTINATION ${packageDirectory})
    if(version)
        write_basic_package_version_file(${output}/${package}-config-version.cmake VERSION ${version}
                                         COMPATIBILITY SameMajorVersion)
        install(FILES ${output}/${package}-config-version.cmake DESTINATION ${packageDirectory})
    endif()
endfunction()

cmake_policy(POP)
