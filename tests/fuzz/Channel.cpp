// SPDX-License-Identifier: Apache-2.0
#include "PayloadTarget.hpp"
#include "Target.hpp"

#include <keyed/dds/ChannelPubSubType.hpp>

namespace plex::fuzz
{

namespace
{

struct Channel {
    using PubSubType = generated::dds_::keyed::ChannelPubSubType;
    static constexpr bool mayGoOn = true;

    static Members membersOf(const PubSubType::type& value)
    {
        return {member(value.number()), member(value.level())};
    }

    static bool valid(const Members& /*members*/) { return true; }
};

} // namespace

void run(std::span<const std::uint8_t> input)
{
    static PayloadTarget<Channel> target;
    target.run(input);
}

} // namespace plex::fuzz
