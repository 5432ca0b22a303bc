// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperatureCdr.hpp"

#include <plex/module/CdrMembers.hpp>

namespace eprosima::fastcdr
{

namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                      const generated::dds_::vexstubif::DomeTemperature& data,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment, data.temp());
}

template <>
void serialize(Cdr& cdr, const generated::dds_::vexstubif::DomeTemperature& data)
{
    members::serializeMembers(cdr, data.temp());
}

template <>
void deserialize(Cdr& cdr, generated::dds_::vexstubif::DomeTemperature& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::vexstubif::DomeTemperature& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding, data.temp());
}

void serialize_key(Cdr& /*cdr*/, const generated::dds_::vexstubif::DomeTemperature& /*data*/) {}

} // namespace eprosima::fastcdr
