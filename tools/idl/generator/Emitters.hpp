// SPDX-License-Identifier: Apache-2.0
// The source files of a topic, each as a text.
#pragma once

#include "Plan.hpp"

#include <string>

namespace ovra::plex::idl
{

std::string valueInterfaceHeader(const TopicPlan& topic); ///< the abstract class of the contract
std::string valueInterfaceSource(const TopicPlan& topic);

std::string wireTypeHeader(const TopicPlan& topic); ///< the value that travels over DDS
std::string wireTypeSource(const TopicPlan& topic);

std::string cdrHeader(const TopicPlan& topic); ///< its encoding for Fast CDR
std::string cdrSource(const TopicPlan& topic);

std::string topicDataTypeHeader(const TopicPlan& topic); ///< how Fast DDS handles it
std::string topicDataTypeSource(const TopicPlan& topic);

std::string adapterHeader(const TopicPlan& topic); ///< the abstract class over the wire type
std::string adapterSource(const TopicPlan& topic);

std::string
factoriesHeader(const std::vector<TopicPlan>& topics); ///< what the library exports for all topics
std::string factoriesSource(const TopicPlan& topic);
std::string descriptionSource(const TopicPlan& topic); ///< what it says of its type

} // namespace ovra::plex::idl
