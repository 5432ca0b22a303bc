// SPDX-License-Identifier: Apache-2.0
#include "Emitters.hpp"
#include "Headers.hpp"
#include "Template.hpp"
#include "Values.hpp"

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

std::string describedKeyFunction(const TopicPlan& topic)
{
    return topic.keys().empty() ? keyFunction(topic)
                                : filledBlock(R"(
void serialize_key(Cdr& cdr, const generated::dds_::@scope@::@Type@& data)
{
    members::serializeKeyFields(cdr, data);
}
)",
                                              {{"scope", topic.scope}, {"Type", topic.name}});
}

/// From a folder below dds/ back to it.
std::string backTo(const std::string& folder)
{
    std::string path;
    for (const char c : folder) {
        path += c == '/' ? "../" : "";
    }
    return path;
}

std::string encodingSentence(const TopicPlan& topic)
{
    const std::string start = "The encoding of " + topic.name + " for Fast CDR: ";
    switch (topic.type->extensibility) {
    case Extensibility::Final:
        return start + "plain in both versions of XCDR.";
    case Extensibility::Appendable:
        return start + "delimited in XCDR version 2, plain in version 1.";
    case Extensibility::Mutable:
        break;
    }
    return start + "a list of members with headers in both versions of XCDR.";
}

/// Nothing for appendable types: they are what is taken for granted.
std::string extensibilityText(const TopicPlan& topic)
{
    return topic.type->extensibility == Extensibility::Appendable
               ? ""
               : filled("template <>\ninline constexpr auto "
                        "ovra::plex::ps::cdr::extensibilityOf<generated::dds_::@scope@::@Type@> "
                        "=\n    ovra::plex::ps::cdr::Extensibility::@extensibility@;\n\n",
                        {{"scope", topic.scope},
                         {"Type", topic.name},
                         {"extensibility", nameInCode(topic.type->extensibility)}});
}

std::string keyNames(const TopicPlan& topic)
{
    std::string text;
    for (const MemberPlan* const plan : topic.keys()) {
        text += (text.empty() ? "" : ", ") + plan->member->name;
    }
    return text.empty() ? "none" : text;
}

std::string simpleSource(const TopicPlan& topic)
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
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator, const generated::dds_::@scope@::@Type@& @data@,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment@members@);
}

template <>
void serialize(Cdr& cdr, const generated::dds_::@scope@::@Type@& @data@)
{
    members::serializeMembers(cdr@members@);
}

template <>
void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& @data@, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding@members@);
}

@keyFunction@
} // namespace eprosima::fastcdr
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"data", parameterName("data", topic)},
                        {"members", members(topic)},
                        {"keyFunction", keyFunction(topic)}});
}

/// For types that need more than their members in their order.
std::string describedSource(const TopicPlan& topic)
{
    const Headers headers{"\"" + backTo(topic.folder) + "ValueFields.hpp\"", "<plex/module/CdrInput.hpp>",
                          "<plex/module/CdrOutput.hpp>"};
    return filledBlock(R"(
// SPDX-License-Identifier: Apache-2.0
#include "@Type@Cdr.hpp"

@includes@
namespace ovra::plex::ps::cdr
{

@fields@} // namespace ovra::plex::ps::cdr

namespace eprosima::fastcdr
{

namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator, const generated::dds_::@scope@::@Type@& data,
                                      std::size_t& currentAlignment)
{
    return members::fieldsSize(calculator.get_cdr_version(), data, currentAlignment);
}

template <>
void serialize(Cdr& cdr, const generated::dds_::@scope@::@Type@& data)
{
    members::serializeFields(cdr, data);
}

template <>
void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data)
{
    deserialize(cdr, data, members::encodingOf(members::Extensibility::@extensibility@, cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::@scope@::@Type@& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeFields(cdr, encoding, data);
}

@keyFunction@
} // namespace eprosima::fastcdr
)",
                       {{"includes", headers.text()},
                        {"scope", topic.scope},
                        {"Type", topic.name},
                        {"fields", topicFieldsText(topic)},
                        {"extensibility", nameInCode(topic.type->extensibility)},
                        {"keyFunction", describedKeyFunction(topic)}});
}

} // namespace

std::string cdrHeader(const TopicPlan& topic)
{
    Headers headers{"\"" + topic.name + ".hpp\"", "<plex/Export.hpp>", "<fastcdr/Cdr.h>",
                    "<fastcdr/CdrSizeCalculator.hpp>", "<cstddef>"};
    if (topic.type->extensibility != Extensibility::Appendable) {
        headers.add("<plex/module/CdrFields.hpp>");
    }
    return filledBlock(
        R"(
// SPDX-License-Identifier: Apache-2.0
#pragma once

@includes@
@extensibility@@documentation@namespace eprosima::fastcdr
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
         {"extensibility", extensibilityText(topic)},
         {"documentation", comment(encodingSentence(topic))}});
}

std::string cdrSource(const TopicPlan& topic)
{
    return isSimple(topic) ? simpleSource(topic) : describedSource(topic);
}

} // namespace ovra::plex::idl
