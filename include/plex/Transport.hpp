// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>

namespace ovra::plex
{

/// What a transport's library exports for the middleware, as "plex_create_transport_<name>" in
/// "libplex-<name>.so", where <name> is the part of a Uri's scheme before its '+'.
///
/// 1. It returns a new instance that the caller owns and deletes; never null.
/// 2. The properties are those given to Plex::create().
/// 3. Exceptions pass to the caller; PlexException is expected.
/// 4. It may be called from any thread, and more than once.
using CreateTransport = Plex* (*)(const Plex::Properties& properties);

} // namespace ovra::plex
