// SPDX-License-Identifier: Apache-2.0
#include <plex/PlexException.hpp>
#include <plex/ps/internal/SampleFilter.hpp>

namespace ovra::plex::ps::internal
{

InstanceEvent deduceInstanceEvent(const dds::SampleInfo& info)
{
    constexpr auto gone = dds::NOT_ALIVE_DISPOSED_INSTANCE_STATE | dds::NOT_ALIVE_NO_WRITERS_INSTANCE_STATE;
    constexpr auto seen = dds::NEW_VIEW_STATE | dds::NOT_NEW_VIEW_STATE;
    if (info.instance_state != 0 && (info.instance_state & ~gone) == 0) {
        return InstanceEvent::Gone;
    }
    if (info.view_state == dds::NEW_VIEW_STATE) {
        return InstanceEvent::New;
    }
    if (info.view_state == dds::NOT_NEW_VIEW_STATE || info.view_state == seen) {
        return InstanceEvent::Update;
    }
    throw PlexException("Plex InstanceEvent can not be deduced from sampleInfo");
}

} // namespace ovra::plex::ps::internal
