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

void UndecodableSamples::add(const void* sample)
{
    if (auto* const gathering = innermost()) {
        gathering->samples_.push_back(sample);
    }
}

} // namespace ovra::plex::ps
