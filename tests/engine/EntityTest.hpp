// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "LogCapture.hpp"
#include "ProcessResources.hpp"
#include "TestTopic.hpp"
#include "WaitFor.hpp"

#include <generated/vexstubif/Factories.hpp>
#include <plex/Plex.hpp>
#include <plex/dds/DdsPlex.hpp>
#include <plex/dds/DdsUriHelper.hpp>
#include <plex/ps/internal/Entities.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace plex::test
{

using namespace std::chrono_literals;
using ovra::plex::IllegalStateException;
using ovra::plex::PlexException;
using ovra::plex::Uri;
using ovra::plex::ps::qos::QoSList;
using Properties = ovra::plex::Plex::Properties;
using vexstubif::AltAz;

/// A vocabulary for tests of publishers and subscribers. Entities of one participant match as they are made,
/// and what is published has arrived when publish() returns, so no test waits.
class EntityTest : public testing::Test
{
protected:
    std::unique_ptr<ovra::plex::ps::Publisher<AltAz>> publisher(const QoSList& qos = {},
                                                                const Properties& properties = {})
    {
        return std::unique_ptr<ovra::plex::ps::Publisher<AltAz>>(
            generated_dds_Publisher_vexstubif_AltAz(plex, uri, qos, properties));
    }

    std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>> subscriber(const QoSList& qos = {},
                                                                  const Properties& properties = {})
    {
        return std::unique_ptr<ovra::plex::ps::Subscriber<AltAz>>(
            generated_dds_Subscriber_vexstubif_AltAz(plex, uri, qos, properties));
    }

    std::unique_ptr<ovra::plex::ps::MrvSubscriber<AltAz>> mrvSubscriber()
    {
        return std::unique_ptr<ovra::plex::ps::MrvSubscriber<AltAz>>(
            generated_dds_MrvSubscriber_vexstubif_AltAz(plex, uri, {}, {}));
    }

    static std::unique_ptr<AltAz> position(double alt, double az = 0.0)
    {
        std::unique_ptr<AltAz> value(generated_dds_DataEntity_vexstubif_AltAz());
        value->setAlt(alt);
        value->setAz(az);
        return value;
    }

    /// Publishes positions with altitudes first, first + 1, …
    static void publishPositions(ovra::plex::ps::Publisher<AltAz>& publisher, int count, int first = 0)
    {
        for (int i = 0; i < count; ++i) {
            publisher.publish(*position(first + i), 0ms);
        }
    }

    static std::vector<double> altitudes(const std::vector<std::shared_ptr<AltAz>>& values)
    {
        std::vector<double> result;
        for (const auto& value : values) {
            result.push_back(value->getAlt());
        }
        return result;
    }

    /// The participant that this test's entities share.
    std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> participant() const
    {
        return plex->getDomainParticipant(uri, {});
    }

    /// Whether the participant knows the test's topic.
    bool topicExists() const
    {
        const auto holder = participant();
        return holder->lookup_topicdescription(ovra::plex::DdsUriHelper::topic(uri, true)) != nullptr;
    }

    /// Lets go of the participant, which nobody else may hold. @returns whether no entity was left in it.
    static bool releasedClean(std::shared_ptr<eprosima::fastdds::dds::DomainParticipant>& participant)
    {
        const LogCapture log;
        const std::weak_ptr<eprosima::fastdds::dds::DomainParticipant> observer = participant;
        participant.reset();
        EXPECT_TRUE(observer.expired());
        return log.records().empty();
    }

    /// Runs an operation that must throw. @returns what() of the exception.
    template <class Exception, class Operation>
    static std::string thrownText(Operation operation)
    {
        try {
            operation();
        } catch (const Exception& error) {
            EXPECT_EQ(typeid(error), typeid(Exception));
            return error.what();
        }
        ADD_FAILURE() << "nothing was thrown";
        return {};
    }

    const Uri uri = testUri();
    const std::shared_ptr<ovra::plex::DdsPlex> plex =
        std::make_shared<ovra::plex::DdsPlex>(Properties{{"dds.wait_for_ack.timeout_ms", "0"}});
};

} // namespace plex::test
