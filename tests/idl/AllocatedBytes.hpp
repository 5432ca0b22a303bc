// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace plex::test
{

/// How many bytes the thread has asked the program's operator new for since this was made, whether or not
/// they were given back.
class AllocatedBytes
{
public:
    AllocatedBytes();

    std::size_t count() const;

private:
    std::size_t before_;
};

} // namespace plex::test
