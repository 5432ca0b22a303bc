// SPDX-License-Identifier: Apache-2.0
#include "../platform/TemporaryDirectory.hpp"
#include "ForeignMrvSubscriber.hpp"
#include "KeyedTest.hpp"

#include <plex/dds/QosInEffect.hpp>

#include <fastdds/dds/domain/DomainParticipantFactory.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace plex::test
{

namespace dds = eprosima::fastdds::dds;
namespace ps = ovra::plex::ps;
namespace qos = ovra::plex::ps::qos;
using ps::QosOrigin;
using ps::QosSetting;

/// What a test expects of a setting.
struct Expected {
    const char* name;
    std::string value;
    QosOrigin origin = QosOrigin::DdsDefault;
    std::string decidedBy = {};
    std::string file = {};
};

class QosInEffectTest : public KeyedTest
{
protected:
    static Properties profiles(const std::string& library)
    {
        return {{"dds.qos.profile.file", PROFILE_FILE}, {"dds.qos.profile.library", library}};
    }

    static void expect(const std::vector<QosSetting>& settings, const std::vector<Expected>& expected)
    {
        for (const auto& wanted : expected) {
            const auto isWanted = [&](const auto& setting) {
                return setting.name == wanted.name;
            };
            ASSERT_EQ(std::ranges::count_if(settings, isWanted), 1) << wanted.name;
            const auto& setting = *std::ranges::find_if(settings, isWanted);
            EXPECT_EQ(setting.value, wanted.value) << wanted.name;
            EXPECT_EQ(toString(setting.origin), toString(wanted.origin)) << wanted.name;
            EXPECT_EQ(setting.decidedBy, wanted.decidedBy) << wanted.name;
            EXPECT_EQ(setting.file, wanted.file) << wanted.name;
        }
    }

    static std::vector<std::string> namesOf(const std::vector<QosSetting>& settings)
    {
        std::vector<std::string> names;
        for (const auto& setting : settings) {
            names.push_back(setting.name);
        }
        return names;
    }

    static constexpr auto library = QosOrigin::LibraryDefault;
};

TEST_F(QosInEffectTest, OfAPublisherWithoutProfilesComesFromDdsAndTheLibrary)
{
    expect(ps::qosInEffect(*publisher()),
           {
               {"topic", ovra::plex::DdsUriHelper::topic(uri, true), QosOrigin::Uri},
               {"domain", std::to_string(testDomain()), QosOrigin::Uri},
               {"transports", "shared memory of 524288 bytes, UDPv4"},
               {"participant lease", "20 s"},
               {"participant announcements every", "3 s"},
               {"presentation", "instance"},
               {"partition", "\"\""},
               {"reliability", "reliable"},
               {"durability", "transient-local"},
               {"history", "keep all", library},
               {"history depth", "1000 samples", library},
               {"max samples", "40000 samples", library},
               {"max instances", "100 instances", library},
               {"max samples per instance", "400 samples"},
               {"allocated samples", "100 samples"},
               {"extra samples", "1 sample"},
               {"history memory", "as needed", library},
               {"deadline", "infinite"},
               {"latency budget", "0 s"},
               {"lifespan", "infinite"},
               {"liveliness", "automatic, lease infinite"},
               {"ownership", "shared"},
               {"destination order", "by reception"},
               {"data representation", "xcdr1"},
               {"data sharing", "automatic"},
               {"max blocking time", "0.1 s"},
               {"ownership strength", "0"},
               {"publish mode", "synchronous"},
               {"wait for acknowledgments at close", "5000 ms", library},
           });
}

TEST_F(QosInEffectTest, OfASubscriberWithoutProfilesComesFromDdsAndTheLibrary)
{
    expect(ps::qosInEffect(*subscriber()), {
                                               {"reliability", "best-effort"},
                                               {"durability", "volatile"},
                                               {"history", "keep all", library},
                                               {"history depth", "1000 samples", library},
                                               {"max samples", "40000 samples", library},
                                               {"history memory", "as needed, reused", library},
                                               {"time-based filter", "0 s"},
                                               {"purge of instances without writers after", "infinite"},
                                               {"purge of disposed instances after", "infinite"},
                                               {"oldest value delivered by latency", "none", library},
                                               {"oldest value delivered by deadline", "none", library},
                                               {"callback thread", "transport", library},
                                               {"callback exceptions", "pass", library},
                                           });
}

TEST_F(QosInEffectTest, NamesTheObjectsOfTheQosList)
{
    const QoSList list{std::make_shared<qos::Deadline>(1500ms), std::make_shared<qos::Latency>(7ms)};
    const Expected deadline{"deadline", "1.0000005 s", QosOrigin::Argument, "qos::Deadline"};
    expect(ps::qosInEffect(*publisher(list)), {deadline});
    expect(ps::qosInEffect(*subscriber(list)),
           {deadline,
            {"oldest value delivered by latency", "7 ms", QosOrigin::Argument, "qos::Latency"},
            {"oldest value delivered by deadline", "1500 ms", QosOrigin::Argument, "qos::Deadline"}});
}

TEST_F(QosInEffectTest, NamesTheProperties)
{
    constexpr auto property = QosOrigin::Property;
    expect(ps::qosInEffect(
               *publisher({}, {{"dds.data_representation", "xcdr2"}, {"dds.wait_for_ack.timeout_ms", "20"}})),
           {{"data representation", "xcdr2", property, "dds.data_representation"},
            {"wait for acknowledgments at close", "20 ms", property, "dds.wait_for_ack.timeout_ms"}});
    expect(ps::qosInEffect(*subscriber({}, {{"dds.data_representation", "xcdr1"},
                                            {"dds.callback.thread", "transport"},
                                            {"dds.callback.exceptions", "log"}})),
           {{"data representation", "xcdr1, xcdr2", property, "dds.data_representation"},
            {"callback thread", "transport", property, "dds.callback.thread"},
            {"callback exceptions", "log", property, "dds.callback.exceptions"}});
}

TEST_F(QosInEffectTest, NamesThePropertyOfTheDomain)
{
    const auto domain = std::to_string(testDomain());
    const Uri withoutDomain("dds+ps:///" + testName());
    const std::unique_ptr<ps::Publisher<AltAz>> made(
        generated_dds_Publisher_vexstubif_AltAz(plex, withoutDomain, {}, {{"dds.domain", domain}}));
    expect(ps::qosInEffect(*made), {{"domain", domain, QosOrigin::Property, "dds.domain"}});
}

TEST_F(QosInEffectTest, NamesProfileAndFileOfWhatAProfileSaysEvenWhereItIsTheDefault)
{
    constexpr auto profile = QosOrigin::Profile;
    expect(
        ps::qosInEffect(*publisher({}, profiles("large"))),
        {{"reliability", "reliable", profile, "large.writer", PROFILE_FILE},
         {"durability", "volatile", profile, "large.writer", PROFILE_FILE},
         {"history", "keep all", profile, "large.writer", PROFILE_FILE},
         {"max samples", "32 samples", profile, "large.writer", PROFILE_FILE},
         {"extra samples", "4 samples", profile, "large.writer", PROFILE_FILE},
         {"publish mode", "asynchronous", profile, "large.writer", PROFILE_FILE},
         {"max blocking time", "1 s", profile, "large.writer", PROFILE_FILE},
         {"data sharing", "off", profile, "large.writer", PROFILE_FILE},
         {"history memory", "as needed, reused", profile, "large.writer", PROFILE_FILE},
         {"deadline", "infinite"},
         {"ownership", "shared"},
         {"partition", "\"\""},
         {"transports", "shared memory of 16777216 bytes, UDPv4", profile, "large.participant", PROFILE_FILE},
         {"participant announcements every", "1 s", profile, "large.participant", PROFILE_FILE},
         {"participant lease", "20 s"}});
    expect(ps::qosInEffect(*subscriber({}, profiles("reliable"))),
           {{"reliability", "reliable", profile, "reliable.reader", PROFILE_FILE},
            {"durability", "volatile", profile, "reliable.reader", PROFILE_FILE},
            {"max instances", "10 instances", profile, "reliable.reader", PROFILE_FILE}});
}

TEST_F(QosInEffectTest, HasTheRepresentationBesideTheProfile)
{
    auto properties = profiles("latched");
    properties["dds.data_representation"] = "xcdr2";
    expect(ps::qosInEffect(*subscriber({}, properties)),
           {{"data representation", "xcdr1, xcdr2", QosOrigin::Property, "dds.data_representation"},
            {"durability", "transient-local", QosOrigin::Profile, "latched.reader", PROFILE_FILE}});
    expect(ps::qosInEffect(*publisher({}, properties)),
           {{"data representation", "xcdr2", QosOrigin::Property, "dds.data_representation"},
            {"history depth", "100 samples", QosOrigin::Profile, "latched.writer", PROFILE_FILE}});
}

TEST_F(QosInEffectTest, NamesTheProfileOfThePartition)
{
    const TemporaryDirectory directory;
    const auto name = "in-partition-" + testName();
    const std::string text =
        R"(<dds><profiles xmlns="http://www.eprosima.com">)"
        R"(<participant profile_name="LIB.participant"/><topic profile_name="LIB.topic"/>)"
        R"(<publisher profile_name="LIB.publisher"><qos><partition><names>)"
        R"(<name>north</name></names></partition></qos></publisher>)"
        R"(<data_writer profile_name="LIB.writer"/></profiles></dds>)";
    auto named = text;
    for (auto at = named.find("LIB"); at != std::string::npos; at = named.find("LIB")) {
        named.replace(at, 3, name);
    }
    const auto file = directory.write("partition.xml", named);
    const auto made = publisher({}, {{"dds.qos.profile.file", file}, {"dds.qos.profile.library", name}});
    expect(ps::qosInEffect(*made), {{"partition", "\"north\"", QosOrigin::Profile, name + ".publisher", file},
                                    {"reliability", "reliable"}});
    std::filesystem::remove(file);
    expect(ps::qosInEffect(*made), {{"partition", "\"north\"", QosOrigin::Profile, name + ".publisher"}});
}

TEST_F(QosInEffectTest, NamesTheEnvironmentForWhatItDidNotDecideItself)
{
    auto* const factory = dds::DomainParticipantFactory::get_instance();
    dds::DomainParticipantQos before;
    factory->get_default_participant_qos(before);
    auto longer = before;
    longer.wire_protocol().builtin.discovery_config.leaseDuration = {30, 0};
    factory->set_default_participant_qos(longer);
    const auto made = publisher();
    factory->set_default_participant_qos(before);
    expect(ps::qosInEffect(*made), {{"participant lease", "30 s", QosOrigin::Environment},
                                    {"participant announcements every", "3 s"}});
}

TEST_F(QosInEffectTest, NamesNoFileWhereNoneIsGiven)
{
    const auto loads = publisher({}, profiles("latched"));
    expect(ps::qosInEffect(*publisher({}, {{"dds.qos.profile.library", "latched"}})),
           {{"history depth", "100 samples", QosOrigin::Profile, "latched.writer"},
            {"reliability", "reliable"}}); // that the profile says so as well is not seen without its file
}

TEST_F(QosInEffectTest, OfAMostRecentValueSubscriberIsItsOwnWhateverTheProfilesSay)
{
    const std::unique_ptr<ps::MrvSubscriber<AltAz>> made(
        generated_dds_MrvSubscriber_vexstubif_AltAz(plex, uri, {}, profiles("reliable")));
    const auto settings = ps::qosInEffect(*made);
    expect(settings, {{"reliability", "best-effort"},
                      {"history", "keep last", library},
                      {"history depth", "1 sample", library},
                      {"history memory", "as needed, reused", library},
                      {"max instances", "10 instances"}});
    EXPECT_THAT(namesOf(settings), testing::Not(testing::Contains("callback thread")));
    expect(ps::qosInEffect(*mrvSensorSubscriber()),
           {{"max samples", "unlimited", library}, {"max instances", "unlimited", library}});
}

TEST_F(QosInEffectTest, OfAnInstancePublisherHasTheDefaultDepth)
{
    const auto publisher = sensorPublisher();
    const auto instance = publisher->createInstancePublisher(*sensor("a"));
    expect(ps::qosInEffect(*instance), {{"history", "keep all", library},
                                        {"history depth", "1 sample"},
                                        {"max samples", "40000 samples", library}});
}

TEST_F(QosInEffectTest, NamesTheVariableThatChoosesTransports)
{
    setenv("FASTDDS_BUILTIN_TRANSPORTS", "UDPv4", 1); // NOLINT(concurrency-mt-unsafe): alone yet
    const auto made = publisher();
    const auto settings = ps::qosInEffect(*made);
    unsetenv("FASTDDS_BUILTIN_TRANSPORTS"); // NOLINT(concurrency-mt-unsafe): alone again soon
    expect(settings, {{"transports", "UDPv4", QosOrigin::Environment, "FASTDDS_BUILTIN_TRANSPORTS"}});
}

TEST_F(QosInEffectTest, OfAClosedEntityIsRefused)
{
    const auto publisher = EntityTest::publisher();
    const auto subscriber = EntityTest::subscriber();
    const auto mostRecent = mrvSubscriber();
    publisher->close();
    subscriber->close();
    mostRecent->close();
    EXPECT_THROW(ps::qosInEffect(*publisher), IllegalStateException);
    EXPECT_THROW(ps::qosInEffect(*subscriber), IllegalStateException);
    EXPECT_THROW(ps::qosInEffect(*mostRecent), IllegalStateException);
}

TEST_F(QosInEffectTest, OfAClosedInstancePublisherIsRefused)
{
    const auto publisher = sensorPublisher();
    const auto instance = publisher->createInstancePublisher(*sensor("a"));
    publisher->close();
    EXPECT_THROW(ps::qosInEffect(*instance), IllegalStateException);
}

TEST_F(QosInEffectTest, OfAnotherTransportsEntityIsRefused)
{
    ForeignMrvSubscriber foreign;
    EXPECT_EQ(thrownText<PlexException>([&] { ps::qosInEffect(foreign); }),
              "The entity is not one of the DDS transport, which alone tells its settings");
}

// --- As text -----------------------------------------------------------------------------------------------

const std::vector<QosSetting> twoSettings{
    {"reliability", "reliable", QosOrigin::Profile, "reliable.writer", "plex.xml"},
    {"deadline", "infinite", QosOrigin::DdsDefault, "", ""},
};

TEST(QosAsText, HasALineForEachSettingInColumns)
{
    EXPECT_EQ(toText(twoSettings), "reliability  reliable  profile reliable.writer of plex.xml\n"
                                   "deadline     infinite  DDS default\n");
    EXPECT_EQ(toText(std::vector<QosSetting>()), "");
}

TEST(QosAsText, NamesEveryOrigin)
{
    std::vector<std::string> names;
    for (int origin = 0; origin <= static_cast<int>(QosOrigin::Environment); ++origin) {
        names.push_back(toString(static_cast<QosOrigin>(origin)));
    }
    EXPECT_THAT(names, testing::ElementsAre("DDS default", "library default", "profile", "property", "URI",
                                            "argument", "environment"));
    EXPECT_EQ(toString(static_cast<QosOrigin>(7)), "");
}

TEST(QosAsJson, HasAMemberForEachSetting)
{
    EXPECT_EQ(
        toJson(twoSettings),
        "{\n"
        R"(  "reliability": {"value": "reliable", "origin": "profile", "decidedBy": "reliable.writer", )"
        "\"file\": \"plex.xml\"},\n"
        R"(  "deadline": {"value": "infinite", "origin": "DDS default"})"
        "\n}\n");
    EXPECT_EQ(toJson(std::vector<QosSetting>()), "{}\n");
}

TEST(QosAsJson, EscapesWhatJsonNeeds)
{
    const std::vector<QosSetting> odd{{"a\"b", "c\\d\n\x1f\xc3\xa9", QosOrigin::Uri, "", ""}};
    EXPECT_EQ(toJson(odd), "{\n  \"a\\\"b\": {\"value\": \"c\\\\d\\u000a\\u001f\xc3\xa9\", "
                           "\"origin\": \"URI\"}\n}\n");
}

} // namespace plex::test
