// SPDX-License-Identifier: Apache-2.0
#include "Compatibility.hpp"

#include <plex/ps/internal/History.hpp>

#include <algorithm>

namespace ovra::plex::ps::internal
{

namespace
{

/// A limit of DDS, which has negative numbers for none.
std::uint64_t limitOf(std::int32_t number)
{
    return static_cast<std::uint64_t>(std::max(number, 0));
}

/// @param qos of a reader or writer, which name these policies alike.
template <class Qos>
History limitsOf(const Qos& qos, const fastdds::Guid& guid)
{
    const bool keepsAll = qos.history().kind == dds::KEEP_ALL_HISTORY_QOS;
    const auto& limits = qos.resource_limits();
    History history;
    history.most = limitOf(limits.max_samples);
    history.mostOfInstance = limitOf(keepsAll ? limits.max_samples_per_instance : qos.history().depth);
    if (!hasKey(guid)) { // DDS knows no instances then
        history.most = keepsAll ? history.most : history.mostOfInstance;
        history.mostOfInstance = history.most;
    }
    return history;
}

} // namespace

History historyOf(const dds::DataReader& reader)
{
    History history = limitsOf(reader.get_qos(), reader.guid());
    history.unread = reader.get_unread_count();
    return history;
}

History historyOf(const dds::DataWriter& writer)
{
    return limitsOf(writer.get_qos(), writer.guid());
}

} // namespace ovra::plex::ps::internal
