// SPDX-License-Identifier: Apache-2.0
#include <plex/fastdds/DiscoveryRelay.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace plex::test
{

namespace
{

namespace fastdds = ovra::plex::fastdds;

using testing::ElementsAre;
using testing::IsEmpty;

fastdds::GuidPrefix prefix(std::uint8_t number)
{
    fastdds::GuidPrefix result;
    result.value[0] = number;
    return result;
}

fastdds::AnnouncedParticipant participant(std::uint8_t number)
{
    fastdds::AnnouncedParticipant result;
    result.prefix = prefix(number);
    return result;
}

fastdds::AnnouncedEndpoint endpoint(std::uint8_t ofParticipant, std::uint8_t number)
{
    fastdds::AnnouncedEndpoint result;
    result.guid.guidPrefix = prefix(ofParticipant);
    result.guid.entityId.value[0] = number;
    return result;
}

/// Writes down what it hears, by numbers.
class Successor final : public fastdds::DiscoveryListener
{
public:
    void announced(const fastdds::AnnouncedParticipant& participant) override
    {
        heard.push_back("participant " + numberOf(participant.prefix));
    }

    void gone(const fastdds::GuidPrefix& participant) override
    {
        heard.push_back("no participant " + numberOf(participant));
    }

    void announced(const fastdds::AnnouncedEndpoint& endpoint) override
    {
        heard.push_back("endpoint " + numberOf(endpoint.guid));
    }

    void gone(const fastdds::Guid& endpoint) override
    {
        heard.push_back("no endpoint " + numberOf(endpoint));
    }

    std::vector<std::string> heard;

private:
    static std::string numberOf(const fastdds::GuidPrefix& prefix) { return std::to_string(prefix.value[0]); }

    static std::string numberOf(const fastdds::Guid& guid)
    {
        return numberOf(guid.guidPrefix) + "." + std::to_string(guid.entityId.value[0]);
    }
};

} // namespace

TEST(DiscoveryRelayTest, HandsOverWhatIsStillThere)
{
    fastdds::DiscoveryRelay relay;
    for (const std::uint8_t number : std::array<std::uint8_t, 2>{1, 2}) {
        relay.announced(participant(number));
        relay.announced(endpoint(number, 1));
        relay.announced(endpoint(number, 2));
    }
    relay.gone(prefix(1)); // and with it its endpoints
    relay.gone(endpoint(2, 1).guid);
    const auto successor = std::make_shared<Successor>();
    relay.handOver(successor);
    EXPECT_THAT(successor->heard, ElementsAre("participant 2", "endpoint 2.2"));
}

TEST(DiscoveryRelayTest, PassesOnWhatComesLater)
{
    fastdds::DiscoveryRelay relay;
    const auto successor = std::make_shared<Successor>();
    relay.handOver(successor);
    EXPECT_THAT(successor->heard, IsEmpty());
    relay.announced(participant(1));
    relay.announced(endpoint(1, 1));
    relay.gone(endpoint(1, 1).guid);
    relay.gone(prefix(1));
    EXPECT_THAT(successor->heard,
                ElementsAre("participant 1", "endpoint 1.1", "no endpoint 1.1", "no participant 1"));
}

} // namespace plex::test
