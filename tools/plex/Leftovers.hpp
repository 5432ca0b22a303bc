// SPDX-License-Identifier: Apache-2.0
// Files of Fast DDS in shared memory, and what is left of programs that were killed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

enum class Holder {
    Living,  ///< a process has it open, maps it or locks it
    Nobody,  ///< no process does so, in whichever container
    Unknown, ///< the system does not tell, as of files of other users
};

/// Files that belong together: a participant's segment, a queue or the values of a writer, each with its
/// locks.
struct SharedFiles {
    std::string name;               ///< of the file that the others guard
    std::vector<std::string> files; ///< names, locks last
    std::uint64_t bytes = 0;        ///< of memory that they take
    Holder holder = Holder::Nobody;
};

/// Looks at all files of both generations of Fast DDS, by name. @param directory of shared memory.
std::vector<SharedFiles> sharedFilesIn(const std::string& directory = "/dev/shm");

/// What nobody held at either of two looks. One look may fall between the making of a file and its use.
std::vector<SharedFiles> leftoversOf(const std::vector<SharedFiles>& first,
                                     const std::vector<SharedFiles>& second);

/// Removes leftovers. @returns those that can not be removed.
std::vector<SharedFiles> remove(const std::vector<SharedFiles>& leftovers,
                                const std::string& directory = "/dev/shm");

} // namespace ovra::plex::tool
