// SPDX-License-Identifier: Apache-2.0
#include "Emitters.hpp"
#include "Headers.hpp"
#include "Template.hpp"

namespace ovra::plex::idl
{

namespace
{

/// "data.alt(), data.az()".
std::string members(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan& plan : topic.members) {
        text += ", data." + plan.name + "()";
    }
    return text;
}

std::string keyMembers(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan* const plan : topic.keys()) {
        text += " << data." + plan->name + "()";
    }
    return text;
}

std::string keyFunction(const TopicPlan& topic)
{
    const bool hasKey = !topic.keys().empty();
    return filledBlock(hasKey ? R"(
void serialize_key(Cdr& cdr, const generated::dds_::@scope@::@Type@& data)
{
    cdr@keyMembers@;
}
)"
                              : R"(
void serialize_key(Cdr& /*cdr*/, const generated::dds_::@scope@::@Type@& /*data*/) {}
)",
                       {{"scope", topic.scope}, {"Type", topic.name}, {"keyMembers", keyMembers(topic)}});
}

std::string keyNames(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan* const plan : topic.keys()) {
        text += (text.empty() ? "" : ", ") + plan->member->name;
    }
    return text.empty() ? "none" : text;
}

} // namespace

std::string cdrHeader(const TopicPlan& topic)
{
    const Headers headers{"\"" + topic.name + ".hpp\"", "<plex/Export.hpp>", "<fastcdr/Cdr.h>",
                          "<fastcdr/CdrSizeCalculator.hpp>", "<cstddef>"};
    return filledBlock(
        R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
@documentation@namespace eprosima::fastcdr
{

/// The bytes that serialize() will write from the current alignment, which is moved past them.
template <>
PLEX_EXPORT std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                                  const generated::dds_::@scope@::@Type@& data,
                                                  std::size_t& currentAlignment);

/// @throws exception::NotEnoughMemoryException when the stream's buffer is too small.
template <>
PLEX_EXPORT void serialize(Cdr& cdr, const generated::dds_::@scope@::@Type@& data);

/// @throws exception::Exception when the input is truncated or malformed; the value may then be partly
///         written.
template <>
PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data);

/// The same for a stream whose encoding is not the usual one of its CDR version.
PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data,
                             EncodingAlgorithmFlag encoding);

/// Writes the key members: @keyNames@.
PLEX_EXPORT void serialize_key(Cdr& cdr, const generated::dds_::@scope@::@Type@& data);

} // namespace eprosima::fastcdr
)",
        {{"includes", headers.text()},
         {"scope", topic.scope},
         {"Type", topic.name},
         {"keyNames", keyNames(topic)},
         {"documentation", comment("The encoding of " + topic.name +
                                   " for Fast CDR: delimited in XCDR version 2, plain in version 1.")}});
}

std::string cdrSource(const TopicPlan& topic)
{
    const Headers headers{"<plex/module/CdrMembers.hpp>"};
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#include "@Type@Cdr.hpp"

@includes@
namespace eprosima::fastcdr
{

namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator, const generated::dds_::@scope@::@Type@& data,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment@members@);
}

template <>
void serialize(Cdr& cdr, const generated::dds_::@scope@::@Type@& data)
{
    members::serializeMembers(cdr@members@);
}

template <>
void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding@members@);
}

@keyFunction@
} // namespace eprosima::fastcdr
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"members", members(topic)},
                        {"keyFunction", keyFunction(topic)}});
}

} // namespace ovra::plex::idl
