// SPDX-License-Identifier: Apache-2.0
#include "Target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    plex::fuzz::run({data, size});
    return 0;
}
