// SPDX-License-Identifier: Apache-2.0
// Writers and readers of one topic, and whether they are matched.
#pragma once

#include "Description.hpp"

#include <plex/dds/Status.hpp>

#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// A writer and a reader of one topic.
struct Pair {
    fastdds::AnnouncedEndpoint writer;
    fastdds::AnnouncedEndpoint reader;
    std::vector<ps::Refusal> refusals;
    bool isMatched; ///< maybe in spite of refusals, as Fast DDS does not go by all policies
};

/// All pairs of a topic, as far as the announcements tell.
std::vector<Pair> pairsOf(const Scene& scene, const std::string& topic);

} // namespace ovra::plex::tool
