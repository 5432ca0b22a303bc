// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "EntityTest.hpp"
#include "PlainPeer.hpp"

#include <plex/dds/Status.hpp>

#include <string>
#include <vector>

namespace plex::test
{

namespace ps = ovra::plex::ps;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class StatusTest : public EntityTest
{
protected:
    /// Waits until an entity's status meets a condition. @returns it.
    template <class Entity, class Condition>
    static ps::EntityStatus statusOnce(Entity& entity, Condition condition)
    {
        ps::EntityStatus status;
        EXPECT_TRUE(waitFor([&] { return condition(status = ps::status(entity)); }));
        return status;
    }

    /// Properties of entities of a library of policies.xml.
    static Properties policies(const char* library)
    {
        return {{"dds.qos.profile.library", library}, {"dds.qos.profile.file", POLICIES_FILE}};
    }

    static std::vector<std::string> inWords(const std::vector<ps::Refusal>& refusals)
    {
        std::vector<std::string> texts;
        for (const auto& refusal : refusals) {
            texts.push_back(toString(refusal));
        }
        return texts;
    }

    static bool refusesOne(const ps::EntityStatus& status) { return status.refused.size() == 1; }

    static bool matchesOne(const ps::EntityStatus& status) { return status.matched.size() == 1; }
};

} // namespace plex::test
