// SPDX-License-Identifier: Apache-2.0
// The files that are not of one topic only.
#pragma once

#include "Plan.hpp"

#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// "Final", "Appendable" or "Mutable".
std::string nameInCode(Extensibility extensibility);

/// The outermost modules that declare something, in their order.
std::vector<std::string> modulesOf(const Plan& plan);

/// The header with the plain types of one of them. The first one's has all of them, since they may refer to
/// one another; the others' include it.
std::string valuesText(const Plan& plan, const std::string& module);

/// What describes to the codec the structs and unions within topics.
std::string fieldsText(const Plan& plan);

/// The description of a topic's wire type, and what else its CDR source needs before its functions.
std::string topicFieldsText(const TopicPlan& topic);

} // namespace ovra::plex::idl
