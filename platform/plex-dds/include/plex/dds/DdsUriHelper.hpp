// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Plex.hpp>
#include <plex/Uri.hpp>

#include <cstdint>
#include <string>

namespace ovra::plex
{

/// The rules of DDS URIs, `dds+ps://<domain>/<topic>`.
///
/// Well-formed is a URI whose scheme begins with "dds+" and that has no user info, port, query or fragment;
/// whose authority is empty or a domain from 0 to 232 (RTPS 2.5, 9.6.2.3: the well-known ports end there);
/// and whose topic, the percent-decoded path without its leading slash, has 1 to 255 bytes (the bound of
/// a topic name in discovery data) none of which is NUL. Of these "dds+ps" is the publish/subscribe
/// profile.
class PLEX_EXPORT DdsUriHelper
{
public:
    DdsUriHelper() = delete;

    /// @param logFailure whether a broken rule is also logged at ERROR.
    /// @throws PlexException saying which rule the URI breaks.
    static void checkUri(const Uri& uri, bool logFailure);

    /// Whether the scheme is the publish/subscribe one. The URI need not be well-formed.
    static bool isPubSubUri(const Uri& uri);

    /// The topic of a well-formed URI.
    /// @param decode whether percent-escapes are decoded, as DDS topic names need it.
    static std::string topic(const Uri& uri, bool decode);

    /// The domain of a well-formed URI; with an empty authority that of the property "dds.domain", default
    /// 0.
    /// @throws PlexException when the property is no number from 0 to 232.
    static std::uint32_t domain(const Uri& uri, const Plex::Properties& properties);
};

} // namespace ovra::plex
