// SPDX-License-Identifier: Apache-2.0
// What is said of a profile that is not there.
#include "EntityTest.hpp"

namespace plex::test
{

using testing::EndsWith;
using testing::StartsWith;

class UnknownProfile : public EntityTest
{
protected:
    /// Properties by which one kind of entity is made of a profile of its own.
    static Properties withProfile(const std::string& kind, const std::string& profile)
    {
        return {{"dds.qos.profile.file", PROFILE_FILE},
                {"dds.qos.profile.library", "reliable"},
                {"dds.qos.profile." + kind, profile}};
    }

    std::string publisherRefusal(const Properties& properties)
    {
        return thrownText<PlexException>([&] { publisher({}, properties); });
    }

    std::string subscriberRefusal(const Properties& properties)
    {
        return thrownText<PlexException>([&] { subscriber({}, properties); });
    }
};

TEST_F(UnknownProfile, OfAWriterIsFollowedByTheNearestOnes)
{
    EXPECT_EQ(publisherRefusal(withProfile("writer", "relaible.writer")),
              "Failed to create writer with profile:relaible.writer; there is no such profile, the nearest "
              "are: reliable.writer, large.writer");
}

TEST_F(UnknownProfile, OfAReaderIsFollowedByTheNearestOnes)
{
    EXPECT_THAT(subscriberRefusal(withProfile("reader", "high_rate.reader")),
                StartsWith("Failed to create reader with profile:high_rate.reader; there is no such profile, "
                           "the nearest are: high-rate.reader"));
}

TEST_F(UnknownProfile, OfATopicIsFollowedByTheNearestOnesBehindTheUri)
{
    EXPECT_THAT(publisherRefusal(withProfile("topic", "latchd.topic")),
                StartsWith("Failed to create topic with profile:latchd.topic Uri: " + uri.string() +
                           "; there is no such profile, the nearest are: latched.topic"));
}

TEST_F(UnknownProfile, OfADdsPublisherOrSubscriberIsFollowedByThoseOfItsKind)
{
    EXPECT_THAT(publisherRefusal(withProfile("publisher", "large.publsher")),
                StartsWith("Failed to create publisher with profile:large.publsher Uri: " + uri.string() +
                           "; there is no such profile, the nearest are: large.publisher"));
    EXPECT_THAT(subscriberRefusal(withProfile("subscriber", "large.subscribr")),
                EndsWith("; there is no such profile, the nearest are: large.subscriber, latched.subscriber, "
                         "reliable.subscriber"));
}

TEST_F(UnknownProfile, ThatIsLikeNoneStandsAlone)
{
    EXPECT_EQ(publisherRefusal(withProfile("writer", "xyz")), "Failed to create writer with profile:xyz");
}

TEST_F(UnknownProfile, WithoutAFileStandsAlone)
{
    // Profiles stay loaded for the process: the names that the topic and the publisher have are known.
    subscriber({}, withProfile("reader", "reliable.reader"));
    auto properties = withProfile("writer", "relaible.writer");
    properties.erase("dds.qos.profile.file");
    EXPECT_EQ(publisherRefusal(properties), "Failed to create writer with profile:relaible.writer");
}

} // namespace plex::test
