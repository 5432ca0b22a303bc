// SPDX-License-Identifier: Apache-2.0
// Which structs are topics: what publishers and subscribers exchange, as against what is only part of
// something. Any thread may call these; what they return points into the model.
#pragma once

#include <plex/idl/Model.hpp>

#include <string>
#include <vector>

namespace ovra::plex::idl
{

enum class TopicSelection : std::uint8_t {
    Automatic, ///< Annotated where a struct of the file is annotated @topic, else all that nothing contains
               ///< or extends
    Annotated, ///< those that are annotated @topic
    All,       ///< every struct
    None       ///< no struct: the types are for others to use
};

/// A struct of the file itself, and whether it is a topic.
struct TopicVerdict {
    const StructType* type;
    bool isTopic;
    std::string reason; ///< "annotated @topic", "dome::Shutter contains it" and the like
};

/// The verdict on each struct that is not from an included file, in the order of the text.
std::vector<TopicVerdict> judgeTopics(const Model& model,
                                      TopicSelection selection = TopicSelection::Automatic);

/// Those that are topics.
std::vector<const StructType*> topics(const Model& model,
                                      TopicSelection selection = TopicSelection::Automatic);

} // namespace ovra::plex::idl
