# SPDX-License-Identifier: Apache-2.0
# cpp-netlib's uri library, which installs no package of its own: the target network-uri::network-uri.

find_path(network-uri_INCLUDE_DIR network/uri/uri.hpp)
find_library(network-uri_LIBRARY network-uri)
mark_as_advanced(network-uri_INCLUDE_DIR network-uri_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(network-uri REQUIRED_VARS network-uri_LIBRARY network-uri_INCLUDE_DIR)

if(network-uri_FOUND AND NOT TARGET network-uri::network-uri)
    add_library(network-uri::network-uri UNKNOWN IMPORTED)
    set_target_properties(network-uri::network-uri PROPERTIES
        IMPORTED_LOCATION ${network-uri_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${network-uri_INCLUDE_DIR})
endif()
