// SPDX-License-Identifier: Apache-2.0
#include "PayloadTarget.hpp"
#include "Target.hpp"

#include <generated/vexstubif/AltAzPubSubType.hpp>

namespace plex::fuzz
{

namespace
{

struct AltAz {
    using PubSubType = generated::dds_::vexstubif::AltAzPubSubType;
    static constexpr bool mayGoOn = true;

    static Members membersOf(const PubSubType::type& value)
    {
        return {member(value.alt()), member(value.az())};
    }

    static bool valid(const Members& /*members*/) { return true; }
};

} // namespace

void run(std::span<const std::uint8_t> input)
{
    static PayloadTarget<AltAz> target;
    target.run(input);
}

} // namespace plex::fuzz
