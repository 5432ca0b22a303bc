// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/Generation.hpp>

namespace ovra::plex::fastdds
{

/// How often a reliable writer tells what it has sent.
inline Duration_t& heartbeatPeriodOf(eprosima::fastdds::dds::DataWriterQos& qos) noexcept
{
#if PLEX_FASTDDS_GENERATION >= 3
    return qos.reliable_writer_qos().times.heartbeat_period;
#else
    return qos.reliable_writer_qos().times.heartbeatPeriod;
#endif
}

} // namespace ovra::plex::fastdds
