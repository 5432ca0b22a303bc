// SPDX-License-Identifier: Apache-2.0
#include "ChannelCdr.hpp"

#include <plex/module/CdrMembers.hpp>

namespace eprosima::fastcdr
{

namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                      const generated::dds_::keyed::Channel& data,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment, data.number(), data.level());
}

template <>
void serialize(Cdr& cdr, const generated::dds_::keyed::Channel& data)
{
    members::serializeMembers(cdr, data.number(), data.level());
}

template <>
void deserialize(Cdr& cdr, generated::dds_::keyed::Channel& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::keyed::Channel& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding, data.number(), data.level());
}

void serialize_key(Cdr& cdr, const generated::dds_::keyed::Channel& data)
{
    cdr << data.number();
}

} // namespace eprosima::fastcdr
