// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Plex.hpp>
#include <plex/common/Properties.hpp>
#include <plex/ps/internal/fastdds.hpp>

#include <optional>

/// The data representation (DDS-XTypes 1.3, 7.6.3.1) that writers offer and readers accept.
namespace ovra::plex::ps::internal
{

/// What property "dds.data_representation" asks for, or nothing where it is absent.
/// @throws PlexException naming the property, its value and the allowed ones.
inline std::optional<DataRepresentationId> dataRepresentation(const Plex::Properties& properties)
{
    const auto text = util::findProperty(properties, "dds.data_representation");
    if (!text) {
        return std::nullopt;
    }
    if (*text == "xcdr1") {
        return eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION;
    }
    if (*text == "xcdr2") {
        return eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION;
    }
    throw PlexException(R"(Property dds.data_representation is neither "xcdr1" nor "xcdr2": ")" + *text +
                        "\"");
}

/// Lets a writer offer the representation asked for, if any.
inline void represent(eprosima::fastdds::dds::DataWriterQos& qos, std::optional<DataRepresentationId> asked)
{
    if (asked) {
        offer(qos, *asked);
    }
}

/// Lets a reader accept every representation, if one is asked for: the payload says which it is.
inline void represent(eprosima::fastdds::dds::DataReaderQos& qos, std::optional<DataRepresentationId> asked)
{
    if (asked) {
        representationOf(qos).m_value = {eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION,
                                         eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION};
    }
}

} // namespace ovra::plex::ps::internal
