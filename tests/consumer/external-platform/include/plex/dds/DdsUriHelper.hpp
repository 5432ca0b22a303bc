// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Uri.hpp>

#include <string>

namespace ovra::plex
{

/// URIs are `dds+ps://<domain>/<topic>` here, without percent-escapes.
class DdsUriHelper
{
public:
    static void checkUri(const Uri& uri, bool logFailure);
    static bool isPubSubUri(const Uri& uri);
    static std::string topic(const Uri& uri, bool decode);
};

} // namespace ovra::plex
