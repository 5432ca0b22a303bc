// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <network/uri.hpp>

namespace ovra::plex
{

/// The address of a topic, for example `Uri{"dds+ps://0/dome/position"}`.
///
/// Constructing one from text that is no URI throws network::uri_syntax_error, a std::system_error.
using Uri = network::uri;

} // namespace ovra::plex
