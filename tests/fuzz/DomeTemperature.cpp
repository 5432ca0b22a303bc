// SPDX-License-Identifier: Apache-2.0
#include "PayloadTarget.hpp"
#include "Target.hpp"

#include <generated/vexstubif/DomeTemperaturePubSubType.hpp>

namespace plex::fuzz
{

namespace
{

struct DomeTemperature {
    using PubSubType = generated::dds_::vexstubif::DomeTemperaturePubSubType;
    static constexpr bool mayGoOn = true;

    static Members membersOf(const PubSubType::type& value) { return {member(value.temp())}; }

    static bool valid(const Members& /*members*/) { return true; }
};

} // namespace

void run(std::span<const std::uint8_t> input)
{
    static PayloadTarget<DomeTemperature> target;
    target.run(input);
}

} // namespace plex::fuzz
