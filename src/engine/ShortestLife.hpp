// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <thread>

namespace ovra::plex::ps::internal
{

/// The shortest time that a data writer or reader lives. When a writer and a reader of one process meet, Fast
/// DDS has the participant's event thread look at the reader once, as soon as it wakes, and that look does
/// not hold the lock under which the deletion of either clears what it reads: it may end in a segmentation
/// fault (2.14 to 3.6 at least). DDS tells nobody when the look is over, so an entity made just now is given
/// ample time for it.
class ShortestLife
{
public:
    /// Blocks the thread while the entity is younger; an older one costs a look at the clock.
    void await() const { std::this_thread::sleep_until(end_); }

private:
    std::chrono::steady_clock::time_point end_ =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
};

} // namespace ovra::plex::ps::internal
