// SPDX-License-Identifier: Apache-2.0
#include "TopicUses.hpp"

namespace ovra::plex::ps::internal
{

TopicUses& topicUses()
{
    static TopicUses& uses = *new TopicUses;
    return uses;
}

} // namespace ovra::plex::ps::internal
