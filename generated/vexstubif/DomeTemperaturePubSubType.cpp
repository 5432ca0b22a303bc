// SPDX-License-Identifier: Apache-2.0
#include "DomeTemperaturePubSubType.hpp"

namespace generated::dds_::vexstubif
{

DomeTemperaturePubSubType::DomeTemperaturePubSubType()
    : PubSubType({"generated::dds_::vexstubif::DomeTemperature", 20, false, 0})
{
}

DomeTemperaturePubSubType::~DomeTemperaturePubSubType() = default;

} // namespace generated::dds_::vexstubif
