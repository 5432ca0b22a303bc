// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/dds/Status.hpp>
#include <plex/fastdds/DiscoveryListener.hpp>

#include <string>
#include <vector>

/// Whether a writer and a reader of one topic fit, and what they announce, in words.
namespace ovra::plex::ps::internal
{

/// The implementation of DDS behind a participant, by its vendor's id (RTPS 2.5, 9.3.2.4); numbers where that
/// is not known here.
std::string vendorOf(const fastdds::AnnouncedParticipant& participant);

/// Where a participant runs, as far as it tells; empty otherwise.
std::string hostOf(const fastdds::AnnouncedParticipant& participant);
std::string processOf(const fastdds::AnnouncedParticipant& participant);

/// A duration in seconds, as "0.1 s", or "infinite".
std::string durationInWords(const fastdds::Duration_t& duration);

/// Whether an endpoint writes, by its entity kind (RTPS 2.5, 9.3.1.2).
bool isWriter(const fastdds::Guid& endpoint);

/// Whether an endpoint's type has a key, by the same.
bool hasKey(const fastdds::Guid& endpoint);

/// All that keeps a writer and a reader of one topic apart, by the standards. Fast DDS itself goes by all of
/// it but latency budget, destination order and presentation.
std::vector<Refusal> refusalsBetween(const fastdds::AnnouncedEndpoint& writer,
                                     const fastdds::AnnouncedEndpoint& reader);

/// Whether Fast DDS itself will not match them.
bool areKeptApart(const fastdds::AnnouncedEndpoint& writer, const fastdds::AnnouncedEndpoint& reader);

/// The announced policies in words, in a fixed order.
std::vector<Policy> policiesOf(const fastdds::AnnouncedEndpoint& endpoint);

} // namespace ovra::plex::ps::internal
