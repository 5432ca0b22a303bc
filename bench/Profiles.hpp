// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

namespace plex::bench
{

/// The QoS profiles that entities of both sides are made from.
struct Profiles {
    std::string library; ///< empty: none, but the default QoS
    std::string reader;  ///< the profile of readers; empty: the library's own

    bool areUsed() const { return !library.empty(); }

    /// The name of the profile for readers.
    std::string ofReaders() const { return reader.empty() ? library + ".reader" : reader; }

    /// The properties that make the binding use them. @param file that they are in.
    std::map<std::string, std::string> properties(const std::string& file) const
    {
        std::map<std::string, std::string> result{{"dds.wait_for_ack.timeout_ms", "0"}};
        if (areUsed()) {
            result["dds.qos.profile.file"] = file;
            result["dds.qos.profile.library"] = library;
            result["dds.qos.profile.reader"] = ofReaders();
        }
        return result;
    }
};

} // namespace plex::bench
