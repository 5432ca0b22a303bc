// SPDX-License-Identifier: Apache-2.0
#include "SensorDds.hpp"

#include <plex/module/CdrMembers.hpp>

#include <fastcdr/exceptions/BadParamException.h>

namespace eprosima::fastcdr
{

using generated::dds_::keyed::Sensor;
namespace members = ovra::plex::ps::cdr;

namespace
{

void checkName(const Sensor& data)
{
    if (data.name().size() > Sensor::maxNameLength) {
        throw exception::BadParamException("The name is longer than its bound");
    }
    if (data.name().find('\0') != std::string::npos) {
        throw exception::BadParamException("The name holds a NUL, at which Fast CDR would end it");
    }
}

} // namespace

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator, const Sensor& data,
                                      std::size_t& currentAlignment)
{
    return members::membersSize(calculator, currentAlignment, data.name(), data.value());
}

template <>
void serialize(Cdr& cdr, const Sensor& data)
{
    checkName(data);
    members::serializeMembers(cdr, data.name(), data.value());
}

template <>
void deserialize(Cdr& cdr, Sensor& data)
{
    deserialize(cdr, data, members::appendableEncoding(cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, Sensor& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeMembers(cdr, encoding, data.name(), data.value());
    checkName(data);
}

void serialize_key(Cdr& cdr, const Sensor& data)
{
    checkName(data);
    cdr << data.name();
}

} // namespace eprosima::fastcdr

namespace generated::dds_::keyed
{

// The payload's most: encapsulation 4, delimiter 4, name 4 + 65, padding 3, value 8; the key's: name 4 + 65.
SensorPubSubType::SensorPubSubType() : PubSubType({"generated::dds_::keyed::Sensor", 88, true, 69}) {}

SensorPubSubType::~SensorPubSubType() = default;

} // namespace generated::dds_::keyed
