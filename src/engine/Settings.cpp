// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/common/Properties.hpp>
#include <plex/ps/internal/Settings.hpp>

namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

std::int64_t waitForAckTimeoutMs(const Plex::Properties& properties)
{
    return util::getLongProperty(properties, "dds.wait_for_ack.timeout_ms", 5000);
}

std::optional<fastdds::DataRepresentationId> dataRepresentation(const Plex::Properties& properties)
{
    const auto found = properties.find("dds.data_representation");
    if (found == properties.end()) {
        return std::nullopt;
    }
    const std::string& text = found->second;
    if (text == "xcdr1") {
        return dds::XCDR_DATA_REPRESENTATION;
    }
    if (text == "xcdr2") {
        return dds::XCDR2_DATA_REPRESENTATION;
    }
    throw PlexException(R"(Property dds.data_representation is neither "xcdr1" nor "xcdr2": ")" + text +
                        "\"");
}

void setRepresentation(dds::DataWriterQos& qos, std::optional<fastdds::DataRepresentationId> asked)
{
    if (asked) {
        fastdds::offer(qos, *asked);
    }
}

void setRepresentation(dds::DataReaderQos& qos, std::optional<fastdds::DataRepresentationId> asked)
{
    if (asked) {
        fastdds::representationOf(qos).m_value = {dds::XCDR_DATA_REPRESENTATION,
                                                  dds::XCDR2_DATA_REPRESENTATION};
    }
}

} // namespace ovra::plex::ps::internal
