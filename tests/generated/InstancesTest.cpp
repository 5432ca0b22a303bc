// SPDX-License-Identifier: Apache-2.0
// Instances of generated types, which a publisher in another process makes and ends: this program once more.
#include <plex/dds/DdsPlex.hpp>
#include <plex/dds/DdsUriHelper.hpp>

#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ChildProcess.hpp>
#include <TestTopic.hpp>
#include <WaitFor.hpp>
#include <dds/ByPartsAdapter.hpp>
#include <dds/ByPlaceAdapter.hpp>
#include <dds/ByTextAdapter.hpp>
#include <dds/Factories.hpp>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace plex::test
{

namespace
{

using namespace std::chrono_literals;
using ovra::plex::ps::DataEvent;
using ovra::plex::ps::DataEventFilter;
using ovra::plex::ps::InstanceEvent;
using ovra::plex::ps::InstanceState;

namespace adapters = generated::ddsimpl::instances;

/// Keys without a bound.
struct Texts {
    using Type = instances::ByText;
    using Adapter = adapters::ByText;
    static constexpr const char* name = "texts";
    static constexpr auto createPublisher = generated_dds_Publisher_instances_ByText;
    static constexpr auto createSubscriber = generated_dds_Subscriber_instances_ByText;
    static constexpr auto createMrvSubscriber = generated_dds_MrvSubscriber_instances_ByText;

    static void setKey(Type& value, int number)
    {
        value.setName(std::string(1000, 'x') + std::to_string(number));
    }

    static int number(const Type& value) { return std::stoi(std::string(value.getName().substr(1000))); }
};

/// Keys within a member.
struct Places {
    using Type = instances::ByPlace;
    using Adapter = adapters::ByPlace;
    static constexpr const char* name = "places";
    static constexpr auto createPublisher = generated_dds_Publisher_instances_ByPlace;
    static constexpr auto createSubscriber = generated_dds_Subscriber_instances_ByPlace;
    static constexpr auto createMrvSubscriber = generated_dds_MrvSubscriber_instances_ByPlace;

    static void setKey(Type& value, int number)
    {
        value.setPlace({7, static_cast<std::int16_t>(number), "no part of the key"});
    }

    static int number(const Type& value) { return value.getPlace().desk; }
};

/// Keys of several members, of which any may tell instances apart.
struct Parts {
    using Type = instances::ByParts;
    using Adapter = adapters::ByParts;
    static constexpr const char* name = "parts";
    static constexpr auto createPublisher = generated_dds_Publisher_instances_ByParts;
    static constexpr auto createSubscriber = generated_dds_Subscriber_instances_ByParts;
    static constexpr auto createMrvSubscriber = generated_dds_MrvSubscriber_instances_ByParts;

    static void setKey(Type& value, int number)
    {
        value.setSite(static_cast<std::int16_t>(number & 1));
        value.setLabel((number & 2) != 0 ? "even" : "odd");
        value.setPlace({number & 4, 0, ""});
        value.setRow({0, number & 8});
    }

    static int number(const Type& value)
    {
        return static_cast<int>(value.getSite() + (value.getLabel() == "even" ? 2 : 0) +
                                value.getPlace().floor + value.getRow()[1]);
    }
};

template <class Topic>
std::shared_ptr<typename Topic::Type> valueOf(int number, double content = 0)
{
    const auto value = std::make_shared<typename Topic::Adapter>();
    Topic::setKey(*value, number);
    value->setValue(content);
    return value;
}

/// Nothing is lost, whoever comes first; and participants of their own.
ovra::plex::Plex::Properties properties()
{
    return {{"dds.qos.profile.file", PROFILE_FILE},
            {"dds.qos.profile.library", "latched"},
            {"dds.wait_for_ack.timeout_ms", "0"}};
}

// --- The publisher's process -------------------------------------------------------------------------------

/// The instance of which a value follows the end of another one.
constexpr int marker = 15;

/// A writer of DDS's own, which ends instances; publishers never do.
template <class Topic>
class PlainWriter
{
public:
    explicit PlainWriter(std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> participant,
                         const ovra::plex::Uri& uri)
        : participant_(std::move(participant))
        , publisher_(participant_->create_publisher({}))
    {
        namespace dds = eprosima::fastdds::dds;
        dds::DataWriterQos qos;
        qos.history().depth = 10;
        qos.writer_data_lifecycle().autodispose_unregistered_instances = false;
        writer_ =
            publisher_->create_datawriter(dynamic_cast<dds::Topic*>(participant_->lookup_topicdescription(
                                              ovra::plex::DdsUriHelper::topic(uri, true))),
                                          qos);
    }

    PlainWriter(const PlainWriter&) = delete;
    PlainWriter& operator=(const PlainWriter&) = delete;

    ~PlainWriter()
    {
        publisher_->delete_datawriter(writer_);
        participant_->delete_publisher(publisher_);
    }

    void dispose(int number)
    {
        const auto value = write(number);
        writer_->dispose(&value->wire(), eprosima::fastdds::dds::HANDLE_NIL);
        write(marker);
    }

    void unregister(int number)
    {
        const auto value = write(number);
        writer_->unregister_instance(&value->wire(), eprosima::fastdds::dds::HANDLE_NIL);
        write(marker);
    }

private:
    std::unique_ptr<typename Topic::Adapter> write(int number)
    {
        auto value = std::make_unique<typename Topic::Adapter>();
        Topic::setKey(*value, number);
        writer_->write(&value->wire());
        return value;
    }

    std::shared_ptr<eprosima::fastdds::dds::DomainParticipant> participant_;
    eprosima::fastdds::dds::Publisher* publisher_;
    eprosima::fastdds::dds::DataWriter* writer_ = nullptr;
};

/// Does what its standard input says, until that ends: "publish NUMBER VALUE", "instance NUMBER VALUE",
/// "dispose NUMBER", "unregister NUMBER".
template <class Topic>
void obey(const ovra::plex::Uri& uri)
{
    const auto plex = std::make_shared<ovra::plex::DdsPlex>(properties());
    const std::unique_ptr<ovra::plex::ps::Publisher<typename Topic::Type>> publisher(
        Topic::createPublisher(plex, uri, {}, properties()));
    PlainWriter<Topic> writer(plex->getDomainParticipant(uri, properties()), uri);
    std::map<int, std::unique_ptr<ovra::plex::ps::InstancePublisher<typename Topic::Type>>> instances;
    int number = 0;
    for (std::string word; std::cin >> word >> number;) {
        double content = 0;
        if (word == "dispose") {
            writer.dispose(number);
        } else if (word == "unregister") {
            writer.unregister(number);
        } else if (std::cin >> content; word == "publish") {
            publisher->publish(*valueOf<Topic>(number, content), 0ms);
        } else {
            auto& instance = instances[number]; // stays: with it goes what nobody has heard yet
            if (!instance) {
                instance = publisher->createInstancePublisher(*valueOf<Topic>(number));
            }
            const auto value = instance->createDataEntity(); // it has the key
            value->setValue(content);
            instance->publish(*value, 0ms);
        }
    }
}

// --- The tests ---------------------------------------------------------------------------------------------

/// An instance's number, and a value of it.
using Content = std::pair<int, double>;

template <class Topic>
class Instances : public testing::Test
{
protected:
    using Type = typename Topic::Type;

    Instances() : publisher_({Topic::name, uri_.string()}) {}

    void TearDown() override
    {
        publisher_.endInput();
        EXPECT_EQ(publisher_.exitStatus(patience), 0);
    }

    void order(const std::string& text) const { ASSERT_TRUE(publisher_.say(text + "\n")); }

    static Content contentOf(const Type& value) { return {Topic::number(value), value.getValue()}; }

    /// The next value of an instance.
    Content readInstance(int number)
    {
        std::shared_ptr<Type> value;
        EXPECT_TRUE(waitFor([&] {
            value = subscriber_->readInstance(*valueOf<Topic>(number));
            return value != nullptr;
        }));
        return value != nullptr ? contentOf(*value) : Content{};
    }

    /// Reads events that pass a filter until there are as many as expected.
    std::vector<std::shared_ptr<DataEvent<Type>>> readEvents(InstanceState state, int number,
                                                             std::size_t count)
    {
        const DataEventFilter<Type> filter(state, {}, valueOf<Topic>(number));
        std::vector<std::shared_ptr<DataEvent<Type>>> events;
        waitFor([&] {
            subscriber_->readDataEvents(filter, events, count - events.size(), 0ms);
            return events.size() >= count;
        });
        return events;
    }

    std::vector<Content> mostRecent()
    {
        std::vector<Content> result;
        for (const auto& value : mostRecent_->readMostRecent(0ms)) {
            result.push_back(contentOf(*value));
        }
        std::ranges::sort(result);
        return result;
    }

    /// Has an instance ended, and hears of its last value that it is one of an instance that is gone.
    void expectGone(const std::string& verb, int number, InstanceState state)
    {
        order(verb + " " + std::to_string(number));
        EXPECT_EQ(readInstance(marker).first, marker);
        std::vector<std::pair<Content, InstanceEvent>> heard;
        const auto subscription = subscriber_->subscribe(
            DataEventFilter<Type>(state, {}, valueOf<Topic>(number)), [&](auto&, const auto& event) {
                heard.emplace_back(contentOf(*event.getData()), event.getInstanceEvent());
            });
        EXPECT_TRUE(waitFor([&] { return subscriber_->poll(0, 1ms) == 0 && !heard.empty(); }));
        EXPECT_THAT(heard, testing::ElementsAre(std::pair(Content(number, 0), InstanceEvent::Gone)));
    }

    const ovra::plex::Uri uri_ = testUri();
    const std::shared_ptr<ovra::plex::DdsPlex> plex_ = std::make_shared<ovra::plex::DdsPlex>(properties());
    const std::unique_ptr<ovra::plex::ps::Subscriber<Type>> subscriber_{
        Topic::createSubscriber(plex_, uri_, {}, properties())};
    const std::unique_ptr<ovra::plex::ps::MrvSubscriber<Type>> mostRecent_{
        Topic::createMrvSubscriber(plex_, uri_, {}, properties())};
    ChildProcess publisher_;
};

using Topics = testing::Types<Texts, Places, Parts>;

class TopicName
{
public:
    template <class Topic>
    static std::string GetName(int /*index*/)
    {
        return Topic::name;
    }
};

TYPED_TEST_SUITE(Instances, Topics, TopicName);

TYPED_TEST(Instances, AreReadOneByOne)
{
    this->order("publish 1 10 publish 2 20 publish 3 30 publish 1 15");
    EXPECT_EQ(this->readInstance(2), Content(2, 20));
    this->order("instance 2 25");
    EXPECT_EQ(this->readInstance(2), Content(2, 25));
    EXPECT_EQ(this->readInstance(1), Content(1, 10));
    EXPECT_EQ(this->readInstance(3), Content(3, 30));
    EXPECT_EQ(this->readInstance(1), Content(1, 15));
    EXPECT_EQ(this->subscriber_->readInstance(*valueOf<TypeParam>(9)), nullptr);
    EXPECT_TRUE(this->subscriber_->read(0).empty());
}

TYPED_TEST(Instances, AreNamedByFilters)
{
    this->order("publish 1 10 publish 2 20 publish 4 40 publish 2 25 publish 12 120");
    const auto events = this->readEvents(InstanceState::Alive, 2, 2);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(this->contentOf(*events[0]->getData()), Content(2, 20));
    EXPECT_EQ(this->contentOf(*events[1]->getData()), Content(2, 25));
    std::vector<Content> heard;
    const auto subscription = this->subscriber_->subscribe(
        DataEventFilter<typename TypeParam::Type>(InstanceState::Alive, {}, valueOf<TypeParam>(8)),
        [&](auto&, const auto& event) { heard.push_back(this->contentOf(*event.getData())); });
    this->order("publish 4 1 publish 8 2 publish 12 3 instance 8 4");
    EXPECT_TRUE(waitFor([&] {
        this->subscriber_->poll(0, 1ms);
        return heard.size() >= 2;
    }));
    EXPECT_THAT(heard, testing::UnorderedElementsAre(Content(8, 2), Content(8, 4))); // from two writers
}

TYPED_TEST(Instances, HaveAMostRecentValueEachUntilTheyEnd)
{
    // Delivery is best effort, and who listens before hears more: so what is asked for is repeated.
    const auto becomes = [&](const std::string& text, const std::vector<Content>& expected) {
        const bool arrived = waitFor([&] {
            this->order(text);
            return waitFor([&] { return this->mostRecent() == expected; }, 2s);
        });
        EXPECT_TRUE(arrived) << testing::PrintToString(this->mostRecent());
    };
    becomes("publish 1 10 publish 2 20 publish 3 30 publish 2 25", {{1, 10}, {2, 25}, {3, 30}});
    becomes("instance 3 35", {{1, 10}, {2, 25}, {3, 35}});
    becomes("dispose 1", {{2, 25}, {3, 35}, {marker, 0}});
    becomes("unregister 4", {{2, 25}, {3, 35}, {marker, 0}});
    this->publisher_.endInput();
    EXPECT_TRUE(waitFor([&] { return this->mostRecent().empty(); })) << "its publisher has gone";
}

TYPED_TEST(Instances, AreGoneWhenTheOtherSideEndsThem)
{
    this->expectGone("dispose", 1, InstanceState::Disposed);
    this->expectGone("unregister", 2, InstanceState::Any);
}

} // namespace

} // namespace plex::test

int main(int argc, char** argv)
{
    using namespace plex::test;
    const std::string verb = argc == 3 ? argv[1] : "";
    if (verb == Texts::name) {
        obey<Texts>(ovra::plex::Uri(argv[2]));
    } else if (verb == Places::name) {
        obey<Places>(ovra::plex::Uri(argv[2]));
    } else if (verb == Parts::name) {
        obey<Parts>(ovra::plex::Uri(argv[2]));
    } else {
        testing::InitGoogleMock(&argc, argv);
        return RUN_ALL_TESTS();
    }
    return 0;
}
