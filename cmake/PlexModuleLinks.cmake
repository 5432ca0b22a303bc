# SPDX-License-Identifier: Apache-2.0
# cmake -D LIST=… -D DIRECTORY=… -D LIBRARY=… -P …: beside the binding of a module, makes links to it by the names under which
# the transport looks for the other modules whose topics it has. They are listed one a line.

file(STRINGS ${LIST} modules)
foreach(module IN LISTS modules)
    set(link ${DIRECTORY}/libplex-dds-${module}.so)
    if(EXISTS ${link} AND NOT IS_SYMLINK ${link})
        message(FATAL_ERROR "${LIBRARY} has topics of the module ${module}, which has a library of its own, ${link}; put all "
                            "of its topics into one call of plex_add_module()")
    endif()
    file(CREATE_LINK ${LIBRARY} ${link} SYMBOLIC)
endforeach()
