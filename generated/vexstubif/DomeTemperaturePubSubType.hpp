// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "DomeTemperature.hpp"
#include "DomeTemperatureCdr.hpp"

#include <plex/Export.hpp>
#include <plex/ps/internal/PubSubType.hpp>

namespace generated::dds_::vexstubif
{

/// How Fast DDS handles samples of DomeTemperature: bounded, not plain, without a key.
class PLEX_EXPORT DomeTemperaturePubSubType : public ovra::plex::ps::internal::PubSubType<DomeTemperature>
{
public:
    using type = DomeTemperature;

    DomeTemperaturePubSubType();
    ~DomeTemperaturePubSubType() override;
};

} // namespace generated::dds_::vexstubif
