// SPDX-License-Identifier: Apache-2.0
// What documentation comments of generated code say.
#pragma once

#include "Plan.hpp"

#include <string>

namespace ovra::plex::idl
{

/// What a definition says of a member besides its type: "Key; at most 32 characters; default empty."
std::string factsOf(const Member& member);

/// A member's documentation, and the facts unless the documentation gives the default itself.
std::string documentationOf(const Member& member);

/// A topic's documentation, or a sentence that stands for it.
std::string documentationOf(const TopicPlan& topic);

/// The first sentence of a topic's documentation, without its full stop.
std::string firstSentenceOf(const TopicPlan& topic);

/// "The type has no key.", or which members are.
std::string keySentenceOf(const TopicPlan& topic);

} // namespace ovra::plex::idl
