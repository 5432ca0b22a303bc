// SPDX-License-Identifier: Apache-2.0
#include "PayloadTarget.hpp"
#include "Target.hpp"

#include <keyed/dds/SensorPubSubType.hpp>

namespace plex::fuzz
{

namespace
{

struct Sensor {
    using PubSubType = generated::dds_::keyed::SensorPubSubType;
    static constexpr bool mayGoOn = false;

    static Members membersOf(const PubSubType::type& value)
    {
        return {member(value.name()), member(value.value())};
    }

    /// A name of at most 64 characters, none of which is NUL.
    static bool valid(const Members& members)
    {
        return members.front().text.size() <= 64 && members.front().text.find('\0') == std::string::npos;
    }
};

} // namespace

void run(std::span<const std::uint8_t> input)
{
    static PayloadTarget<Sensor> target;
    target.run(input);
}

} // namespace plex::fuzz
