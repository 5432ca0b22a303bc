// SPDX-License-Identifier: Apache-2.0
#include "ChannelDds.hpp"

#include <plex/module/CdrMembers.hpp>

namespace eprosima::fastcdr
{

using generated::dds_::keyed::Channel;
namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator, const Channel& data,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment, data.number(), data.level());
}

template <>
void serialize(Cdr& cdr, const Channel& data)
{
    members::serializeMembers(cdr, data.number(), data.level());
}

template <>
void deserialize(Cdr& cdr, Channel& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, Channel& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding, data.number(), data.level());
}

void serialize_key(Cdr& cdr, const Channel& data)
{
    cdr << data.number();
}

} // namespace eprosima::fastcdr

namespace generated::dds_::keyed
{

ChannelPubSubType::ChannelPubSubType() : PubSubType({"generated::dds_::keyed::Channel", 20, true, 4}) {}

ChannelPubSubType::~ChannelPubSubType() = default;

} // namespace generated::dds_::keyed
