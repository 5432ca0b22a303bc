// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <string>

namespace ovra::plex::ps::detail
{

/// A new random UUID (RFC 4122, version 4) as text, for example "2f1c9c52-7d0f-4a9e-8b57-0c2f6f3e9a11".
/// May be called from several threads at once.
PLEX_EXPORT std::string newUUID();

} // namespace ovra::plex::ps::detail
