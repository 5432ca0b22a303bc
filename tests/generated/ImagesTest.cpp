// SPDX-License-Identifier: Apache-2.0
// Values of 1 MB, from another process: this program once more.
#include <plex/Plex.hpp>

#include <gtest/gtest.h>

#include <ChildProcess.hpp>
#include <TestTopic.hpp>
#include <WaitFor.hpp>
#include <algorithm>
#include <fstream>
#include <images/Frame.hpp>
#include <images/Image.hpp>
#include <images/Values.hpp>
#include <iostream>
#include <poll.h>
#include <string>
#include <thread>
#include <vector>

namespace plex::test
{

namespace
{

using namespace std::chrono_literals;
using images::Frame;
using images::Image;

constexpr std::size_t size = images::LARGEST;
constexpr unsigned count = 60;
constexpr auto period = 33ms; ///< 30 Hz

ovra::plex::Plex::Properties defaults()
{
    return {{"dds.module.path", MODULE_DIRECTORY}, {"dds.wait_for_ack.timeout_ms", "0"}};
}

ovra::plex::Plex::Properties large()
{
    auto result = defaults();
    result["dds.qos.profile.file"] = PROFILE_FILE;
    result["dds.qos.profile.library"] = "large";
    return result;
}

/// What a line of /proc/PID/status says, in MB: VmHWM is the most memory that the process has had, VmSize its
/// address space.
double megabytes(const std::string& process, const std::string& line)
{
    std::ifstream status("/proc/" + process + "/status");
    for (std::string word; status >> word;) {
        if (word == line + ":") {
            double kilobytes = 0;
            status >> kilobytes;
            return kilobytes / 1024;
        }
    }
    return -1;
}

/// Whether the process takes as much memory as its program says: sanitizers take more.
#ifdef __SANITIZE_ADDRESS__
constexpr bool isAlone = false;
#else
constexpr bool isAlone = true;
#endif

/// Each image has contents of its own, which differ from one byte to the next.
template <class T>
void fill(T& value, unsigned number)
{
    value.setNumber(number);
    const auto pixels = value.resizePixels(size);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i * 7 + i / 256 + number);
    }
}

template <class T>
bool isWhole(const T& value)
{
    const auto pixels = value.getPixels();
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (pixels[i] != static_cast<std::uint8_t>(i * 7 + i / 256 + value.getNumber())) {
            return false;
        }
    }
    return pixels.size() == size;
}

bool isTold()
{
    pollfd input{0, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}

/// Publishes number 0 until it is told that somebody listens, then the others at 30 Hz; ends with its input.
template <class T>
void publish(const ovra::plex::Uri& uri)
{
    const auto plex = ovra::plex::Plex::create(large());
    const auto publisher = plex->createPublisher<T>(uri);
    const auto value = publisher->createDataEntity();
    fill(*value, 0);
    auto next = std::chrono::steady_clock::now();
    const auto publishNext = [&] {
        publisher->publish(*value, 0ms);
        next += period;
        std::this_thread::sleep_until(next); // the rate is what is tried
    };
    while (!isTold()) {
        publishNext();
    }
    std::string line;
    std::getline(std::cin, line);
    for (unsigned number = 1; number <= count; ++number) {
        fill(*value, number);
        publishNext();
    }
    while (std::getline(std::cin, line)) {
    }
}

template <class T>
class LargeValues : public testing::Test
{
};

class TypeName
{
public:
    template <class T>
    static std::string GetName(int /*index*/)
    {
        return std::is_same_v<T, Image> ? "Unbounded" : "Bounded";
    }
};

using Types = testing::Types<Image, Frame>;

TYPED_TEST_SUITE(LargeValues, Types, TypeName);

TYPED_TEST(LargeValues, ArriveAllAtThirtyHertzInAnotherProcess)
{
    const auto plex = ovra::plex::Plex::create(large());
    const auto subscriber = plex->createSubscriber<TypeParam>(testUri());
    ChildProcess publisher({TypeName::GetName<TypeParam>(0), testUri().string()});
    ASSERT_TRUE(waitFor([&] { return !subscriber->read(1).empty(); }));
    publisher.say("go\n");

    std::vector<unsigned> numbers;
    EXPECT_TRUE(waitFor([&] {
        for (const auto& value : subscriber->read(0)) {
            if (value->getNumber() > 0) {
                EXPECT_TRUE(isWhole(*value)) << value->getNumber();
                numbers.push_back(value->getNumber());
            }
        }
        return numbers.size() == count;
    }));
    for (unsigned i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(numbers[i], i + 1);
    }
    const double used = megabytes(std::to_string(publisher.id()), "VmHWM");
    this->RecordProperty("PublisherMegabytes", static_cast<int>(used));
    EXPECT_GT(used, 0);
    EXPECT_TRUE(used < 80 || !isAlone) << used;
    publisher.endInput();
    EXPECT_EQ(publisher.exitStatus(patience), 0);
}

/// Histories of up to 40 000 values take what is published only.
TYPED_TEST(LargeValues, TakeNoMemoryBeforeTheyArePublished)
{
    for (const std::string representation : {"", "xcdr2"}) {
        auto properties = defaults();
        if (!representation.empty()) {
            properties["dds.data_representation"] = representation;
        }
        const auto plex = ovra::plex::Plex::create(properties);
        const auto other = plex->createPublisher<Image>(testUri("other")); // makes the participant
        const double before = megabytes("self", "VmSize");
        const double usedBefore = megabytes("self", "VmRSS");
        const auto subscriber = plex->createSubscriber<TypeParam>(testUri(representation));
        const auto publisher = plex->createPublisher<TypeParam>(testUri(representation));
        const auto value = publisher->createDataEntity();
        fill(*value, 1);
        publisher->publish(*value, 0ms);
        ASSERT_TRUE(waitFor([&] { return !subscriber->read(1).empty(); }));
        const double reserved = megabytes("self", "VmSize") - before;
        const double used = megabytes("self", "VmRSS") - usedBefore;
        EXPECT_TRUE(reserved < 400 || !isAlone) << reserved;
        EXPECT_TRUE(used < 40 || !isAlone) << used;
    }
}

std::size_t sizeOf(unsigned number)
{
    return std::size_t{10000} << number;
}

/// Room is made for the value that is published, in whichever version of XCDR it is written.
TEST(UnboundedValues, MayBeLargerThanWhatRoomIsMadeForAtFirst)
{
    for (const std::string representation : {"xcdr1", "xcdr2"}) {
        auto properties = defaults();
        properties["dds.data_representation"] = representation;
        const auto plex = ovra::plex::Plex::create(properties);
        const auto subscriber = plex->createSubscriber<Image>(testUri(representation));
        const auto publisher = plex->createPublisher<Image>(testUri(representation));
        const auto value = publisher->createDataEntity();
        for (unsigned number = 0; number < 3; ++number) {
            value->setNumber(number);
            value->resizePixels(sizeOf(number));
            publisher->publish(*value, 0ms);
            std::vector<std::shared_ptr<Image>> read;
            ASSERT_TRUE(waitFor([&] {
                read = subscriber->read(1);
                return !read.empty();
            })) << representation;
            EXPECT_EQ(read[0]->getNumber(), number);
            EXPECT_EQ(read[0]->getPixels().size(), sizeOf(number));
        }
    }
}

} // namespace

} // namespace plex::test

int main(int argc, char** argv)
{
    using namespace plex::test;
    const std::string kind = argc == 3 ? argv[1] : "";
    if (kind == "Unbounded") {
        publish<Image>(ovra::plex::Uri(argv[2]));
    } else if (kind == "Bounded") {
        publish<Frame>(ovra::plex::Uri(argv[2]));
    } else {
        testing::InitGoogleTest(&argc, argv);
        return RUN_ALL_TESTS();
    }
    return 0;
}
