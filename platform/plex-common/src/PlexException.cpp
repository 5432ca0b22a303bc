// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>

namespace ovra::plex
{

PlexException::PlexException(const std::string& message) : std::runtime_error(message) {}

PlexException::~PlexException() = default;

IllegalStateException::IllegalStateException(const std::string& message) : PlexException(message) {}

IllegalStateException::~IllegalStateException() = default;

} // namespace ovra::plex
