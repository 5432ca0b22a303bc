// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"

#include <plex/dds/ProfileName.hpp>

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace plex::test
{

namespace
{

using ovra::plex::getProfileNameByProfileType;
using ovra::plex::Plex;
using ovra::plex::ProfileType;

struct Kind {
    std::int32_t type;
    const char* name;
};

constexpr std::array<Kind, 6> kinds{
    {{0, "participant"}, {1, "topic"}, {2, "writer"}, {3, "publisher"}, {4, "reader"}, {5, "subscriber"}}};

std::string profileName(std::int32_t type, const Plex::Properties& properties)
{
    return getProfileNameByProfileType(static_cast<ProfileType>(type), properties);
}

} // namespace

TEST(ProfileName, IsTheLibraryAndTheKind)
{
    for (const auto& [type, name] : kinds) {
        EXPECT_EQ(profileName(type, {{"dds.qos.profile.library", "reliable"}}),
                  std::string("reliable.") + name);
    }
}

TEST(ProfileName, IsTheKindsOwnPropertyWhereThatIsPresent)
{
    for (const auto& [type, name] : kinds) {
        const Plex::Properties properties{{"dds.qos.profile.library", "reliable"},
                                          {std::string("dds.qos.profile.") + name, "special"}};
        for (const auto& [otherType, otherName] : kinds) {
            EXPECT_EQ(profileName(otherType, properties),
                      otherType == type ? "special" : std::string("reliable.") + otherName);
        }
    }
}

TEST(ProfileName, HasAnEmptyLibraryWhereNoneIsNamed)
{
    EXPECT_EQ(profileName(1, {}), ".topic");
}

TEST(ProfileName, HasNoOtherKinds)
{
    for (const std::int32_t type : {-1, 6, 100}) {
        EXPECT_EQ(refusalOf([&] { profileName(type, {}); }),
                  "Unknown type of QoS profile: " + std::to_string(type));
    }
}

} // namespace plex::test
