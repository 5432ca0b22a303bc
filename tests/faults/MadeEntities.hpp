// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace plex::test
{

/// Remembers the entity that an operation of DDS has just made; Interposers.cpp tells.
void rememberMade(const std::string& operation, void* entity);

/// The entity that an operation made last, or null.
void* lastMade(const std::string& operation);

/// The same as what it is, for a look at what it was made with.
template <class Entity>
Entity* lastMade(const std::string& operation)
{
    return static_cast<Entity*>(lastMade(operation));
}

} // namespace plex::test
