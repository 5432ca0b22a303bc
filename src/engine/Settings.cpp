// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/common/Properties.hpp>
#include <plex/ps/internal/Settings.hpp>

namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

namespace
{

/// Whether a property has the second of two texts; it has the first where it is absent.
/// @throws PlexException where it has neither.
bool isSecond(const Plex::Properties& properties, const std::string& name, const std::string& first,
              const std::string& second)
{
    const auto found = properties.find(name);
    if (found == properties.end() || found->second == first) {
        return false;
    }
    if (found->second == second) {
        return true;
    }
    throw PlexException("Property " + name + " is neither \"" + first + "\" nor \"" + second + "\": \"" +
                        found->second + "\"");
}

} // namespace

std::int64_t waitForAckTimeoutMs(const Plex::Properties& properties)
{
    return util::getLongProperty(properties, "dds.wait_for_ack.timeout_ms", 5000);
}

std::optional<fastdds::DataRepresentationId> dataRepresentation(const Plex::Properties& properties)
{
    const std::string name = "dds.data_representation";
    if (!properties.contains(name)) {
        return std::nullopt;
    }
    return isSecond(properties, name, "xcdr1", "xcdr2") ? dds::XCDR2_DATA_REPRESENTATION
                                                        : dds::XCDR_DATA_REPRESENTATION;
}

CallbacksOn callbacksOn(const Plex::Properties& properties)
{
    return isSecond(properties, "dds.callback.thread", "transport", "own") ? CallbacksOn::OwnThread
                                                                           : CallbacksOn::Transport;
}

bool logsCallbackExceptions(const Plex::Properties& properties)
{
    return isSecond(properties, "dds.callback.exceptions", "pass", "log");
}

void setRepresentation(dds::DataWriterQos& qos, std::optional<fastdds::DataRepresentationId> asked,
                       bool mayPreallocate)
{
    if (asked) {
        fastdds::offer(qos, *asked, mayPreallocate);
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
