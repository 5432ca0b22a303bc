// SPDX-License-Identifier: Apache-2.0
// Programs that know one version of a type talk to programs that know another one.
#include <plex/Plex.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <LogCapture.hpp>
#include <TestTopic.hpp>
#include <WaitFor.hpp>
#include <after/Frozen.hpp>
#include <after/Growing.hpp>
#include <after/Loose.hpp>
#include <algorithm>
#include <before/Frozen.hpp>
#include <before/Growing.hpp>
#include <before/Loose.hpp>
#include <string>
#include <vector>

namespace plex::test
{

namespace
{

using namespace std::chrono_literals;

/// What the test says of a value is what both versions have; the later one says more.
template <class T>
std::string textOf(const T& value)
{
    return std::to_string(value.getNumber()) + " " + std::string(value.getName());
}

template <class T>
std::string moreTextOf(const T& value)
{
    std::string text = textOf(value) + " " + std::to_string(value.getHeight()) + " " +
                       std::string(value.getNote().value_or("-")) + " " + std::to_string(value.getSize());
    for (const auto element : value.getList()) {
        text += " " + std::to_string(element);
    }
    return text;
}

/// Two programs, each with a middleware instance of its own.
class Evolution : public testing::TestWithParam<std::string>
{
protected:
    template <class T>
    std::unique_ptr<ovra::plex::ps::Publisher<T>> publisher()
    {
        return sender_->createPublisher<T>(testUri());
    }

    template <class T>
    std::unique_ptr<ovra::plex::ps::Subscriber<T>> subscriber()
    {
        return receiver_->createSubscriber<T>(testUri());
    }

    template <class T>
    static void publishNew(ovra::plex::ps::Publisher<T>& publisher)
    {
        const auto value = publisher.createDataEntity();
        value->setNumber(7);
        value->setName("seven");
        value->setHeight(2.5);
        value->setNote("note");
        value->setList(std::vector<std::int32_t>{1, 2});
        value->setSize(3);
        publisher.publish(*value, 0ms);
    }

    template <class T>
    static void publishOld(ovra::plex::ps::Publisher<T>& publisher)
    {
        const auto value = publisher.createDataEntity();
        value->setNumber(8);
        value->setName("eight");
        publisher.publish(*value, 0ms);
    }

    /// The value that arrives; empty when there is none.
    template <class T>
    static std::shared_ptr<T> arrival(ovra::plex::ps::Subscriber<T>& subscriber)
    {
        std::vector<std::shared_ptr<T>> values;
        waitFor([&] {
            values = subscriber.read(1);
            return !values.empty();
        });
        return values.empty() ? nullptr : values.front();
    }

    /// Publishes in another version than what is read: nothing is, and the log says so.
    template <class Read, class Written>
    void expectRefusal(void (*publish)(ovra::plex::ps::Publisher<Written>&))
    {
        const LogCapture log;
        const auto subscriber = this->subscriber<Read>();
        const auto publisher = this->publisher<Written>();
        publish(*publisher);
        EXPECT_TRUE(waitFor([&] {
            EXPECT_TRUE(subscriber->read(0).empty());
            return std::ranges::any_of(log.records(), [](const LogRecord& record) {
                return record.level == log4cplus::WARN_LOG_LEVEL &&
                       record.text.find("can not be decoded") != std::string::npos;
            });
        }));
    }

    static ovra::plex::Plex::Properties properties()
    {
        return {{"dds.module.path", MODULE_DIRECTORY},
                {"dds.data_representation", GetParam()},
                {"dds.qos.profile.file", PROFILE_FILE},
                {"dds.qos.profile.library", "latched"}};
    }

    const std::shared_ptr<ovra::plex::Plex> sender_ = ovra::plex::Plex::create(properties());
    const std::shared_ptr<ovra::plex::Plex> receiver_ = ovra::plex::Plex::create(properties());
};

TEST_P(Evolution, LaterAppendableValuesAreReadWithoutWhatWasAdded)
{
    const auto subscriber = this->subscriber<before::Growing>();
    const auto publisher = this->publisher<after::Growing>();
    publishNew(*publisher);
    const auto value = arrival(*subscriber);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(textOf(*value), "7 seven");
}

TEST_P(Evolution, LaterMutableValuesAreReadWithoutWhatWasAddedAndWithDefaultsForWhatWasRemoved)
{
    const auto subscriber = this->subscriber<before::Loose>();
    const auto publisher = this->publisher<after::Loose>();
    publishNew(*publisher);
    const auto value = arrival(*subscriber);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(textOf(*value), "7 seven");
    EXPECT_EQ(value->getWeight(), 0.0);
}

TEST_P(Evolution, EarlierMutableValuesAreReadWithDefaultsForWhatWasAdded)
{
    const auto subscriber = this->subscriber<after::Loose>();
    const auto publisher = this->publisher<before::Loose>();
    publishOld(*publisher);
    const auto value = arrival(*subscriber);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(moreTextOf(*value), "8 eight 0.000000 - 5");
}

/// Version 1 has nothing that tells where an appendable value ends.
TEST_P(Evolution, EarlierAppendableValuesAreReadWithDefaultsInVersion2Only)
{
    if (GetParam() == "xcdr1") {
        expectRefusal<after::Growing>(publishOld<before::Growing>);
        return;
    }
    const auto subscriber = this->subscriber<after::Growing>();
    const auto publisher = this->publisher<before::Growing>();
    publishOld(*publisher);
    const auto value = arrival(*subscriber);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(moreTextOf(*value), "8 eight 0.000000 - 5");
}

TEST_P(Evolution, FinalValuesOfAnotherVersionAreRefused)
{
    expectRefusal<after::Frozen>(publishOld<before::Frozen>);
    expectRefusal<before::Frozen>(publishNew<after::Frozen>);
}

INSTANTIATE_TEST_SUITE_P(Versions, Evolution, testing::Values("xcdr1", "xcdr2"),
                         [](const auto& version) { return version.param; });

} // namespace

} // namespace plex::test
