// SPDX-License-Identifier: Apache-2.0
#include "AltAzPubSubType.hpp"

namespace generated::dds_::vexstubif
{

AltAzPubSubType::AltAzPubSubType() : PubSubType({"generated::dds_::vexstubif::AltAz", 28, false, 0}) {}

AltAzPubSubType::~AltAzPubSubType() = default;

} // namespace generated::dds_::vexstubif
