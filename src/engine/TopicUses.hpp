// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

#include <cstddef>
#include <map>
#include <mutex>

namespace eprosima::fastdds::dds
{
class Topic;
}

namespace ovra::plex::ps::internal
{

/// The process's topics that this binding made, each with the number of its entities that use it.
///
/// DDS hands out a topic without counting who has looked it up, and would delete it between another
/// entity's lookup and the making of its reader or writer. So entities count themselves in under the lock
/// under which they look up, and the last one deletes the topic under the same lock.
class TopicUses
{
public:
    /// Guards lookup, making and deletion of topics and the counts. Held for calls into the participant
    /// only, which call nobody back.
    std::mutex mutex;

    /// A topic was made, with one use.
    void made(eprosima::fastdds::dds::Topic* topic) { counts_[topic] = 1; }

    /// An existing topic was found; counted if it was made here.
    void found(eprosima::fastdds::dds::Topic* topic)
    {
        const auto entry = counts_.find(topic);
        if (entry != counts_.end()) {
            ++entry->second;
        }
    }

    /// One use ended. @returns whether the topic was made here and this was its last use.
    bool released(eprosima::fastdds::dds::Topic* topic)
    {
        const auto entry = counts_.find(topic);
        if (entry == counts_.end() || --entry->second > 0) {
            return false;
        }
        counts_.erase(entry);
        return true;
    }

private:
    std::map<eprosima::fastdds::dds::Topic*, std::size_t> counts_;
};

/// The one instance of the process. It is never destroyed: entities with static storage end after it
/// otherwise.
PLEX_EXPORT TopicUses& topicUses();

} // namespace ovra::plex::ps::internal
