// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

namespace ovra::plex::ps
{

/// A callback that is registered with a subscriber. Dropping it ends it.
///
/// Threads: one at a time. Ownership: keeps its subscriber alive, open or closed.
class PLEX_EXPORT Subscription
{
public:
    /// Ends the subscription; no callback starts once this has returned. Closing again does nothing. Waits
    /// for a callback of it that runs on another thread; inside a callback, its own too, it waits for
    /// nothing.
    /// @throws std::system_error when the registry cannot be locked.
    virtual void close() = 0;

    virtual ~Subscription();
};

} // namespace ovra::plex::ps
