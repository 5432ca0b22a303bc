// SPDX-License-Identifier: Apache-2.0
#include <plex/module/UndecodableSamples.hpp>

namespace ovra::plex::ps
{

namespace
{

thread_local UndecodableSamples* innermostOfThread = nullptr;

} // namespace

UndecodableSamples*& UndecodableSamples::innermost()
{
    return innermostOfThread;
}

void UndecodableSamples::add(const void* sample, std::span<const std::uint8_t> bytes)
{
    if (auto* const gathering = innermost()) {
        gathering->samples_.push_back(sample);
        const auto first = bytes.first(std::min(bytes.size(), mostBytes));
        gathering->lastBytes_.assign(first.begin(), first.end());
    }
}

} // namespace ovra::plex::ps
