// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Domain.hpp"
#include "RawType.hpp"

#include <plex/dds/Status.hpp>

#include <fastdds/dds/publisher/DataWriter.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// A reliable writer of payloads that are encoded already, which offers what the readers of its topic ask
/// for.
///
/// Belongs to one thread, and goes before its domain.
class RawWriter
{
public:
    struct Type {
        std::string name; ///< in DDS
        bool keyed;
        fastdds::DataRepresentationId representation;
        bool waitsForReaders = false; ///< rather than to lose values that reliable readers do not have yet
    };

    /// @param readers those that are to be suited.
    /// @throws Failure where DDS refuses.
    RawWriter(Domain& domain, const std::string& topic, const Type& type,
              const std::vector<fastdds::AnnouncedEndpoint>& readers);

    /// How many readers it has.
    std::size_t matched() const;

    /// What keeps it and a reader apart.
    std::vector<ps::Refusal> refusalsOf(const fastdds::AnnouncedEndpoint& reader) const;

    /// @returns false: reliable readers still lack too many values. @throws Failure when the value is not
    /// taken.
    bool tryToWrite(const RawSample& sample);

    /// @throws Failure when the value is not taken.
    void write(const RawSample& sample);

    /// Waits until all reliable readers have what was written. @returns whether they have.
    bool waitForAcknowledgments(std::chrono::milliseconds timeout);

private:
    const Domain& domain_;
    dds::DataWriter* writer_; ///< the participant's
};

/// Refuses names that no topic has: Fast DDS would cut a longer one off, and so publish another topic.
/// @throws Failure.
void requireTopicName(const std::string& topic);

} // namespace ovra::plex::tool
