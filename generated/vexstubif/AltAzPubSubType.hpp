// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "AltAz.hpp"
#include "AltAzCdr.hpp"

#include <plex/Export.hpp>
#include <plex/ps/internal/PubSubType.hpp>

namespace generated::dds_::vexstubif
{

/// How Fast DDS handles samples of AltAz: bounded, not plain, without a key.
class PLEX_EXPORT AltAzPubSubType : public ovra::plex::ps::internal::PubSubType<AltAz>
{
public:
    using type = AltAz;

    AltAzPubSubType();
    ~AltAzPubSubType() override;
};

} // namespace generated::dds_::vexstubif
