// SPDX-License-Identifier: Apache-2.0
#include "AltAzCdr.hpp"

#include <plex/module/CdrMembers.hpp>

namespace eprosima::fastcdr
{

namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                      const generated::dds_::vexstubif::AltAz& data,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment, data.alt(), data.az());
}

template <>
void serialize(Cdr& cdr, const generated::dds_::vexstubif::AltAz& data)
{
    members::serializeMembers(cdr, data.alt(), data.az());
}

template <>
void deserialize(Cdr& cdr, generated::dds_::vexstubif::AltAz& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::vexstubif::AltAz& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding, data.alt(), data.az());
}

void serialize_key(Cdr& /*cdr*/, const generated::dds_::vexstubif::AltAz& /*data*/) {}

} // namespace eprosima::fastcdr
