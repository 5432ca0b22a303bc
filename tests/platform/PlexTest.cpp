// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"
#include "TemporaryDirectory.hpp"
#include "modules/telltale.hpp"

#include <plex/Plex.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// A value type that belongs to no module.
struct Homeless {
};

namespace hollow
{

struct Value {
};

} // namespace hollow

namespace nowhere
{

struct Value {
};

namespace inner
{

struct Value {
};

} // namespace inner

} // namespace nowhere

namespace plex::test
{

namespace
{

using ovra::plex::Plex;
using ovra::plex::Uri;
using ovra::plex::ps::qos::Deadline;
using ovra::plex::ps::qos::Latency;
using ovra::plex::ps::qos::QoSList;
using testing::HasSubstr;
using testing::StartsWith;

const std::string modules = PLEX_TEST_MODULES_DIR;
const Plex::Properties modulePath{{"dds.module.path", modules}};
const Uri anyUri("dds+ps://0/topic");

template <class T>
std::string publisherRefusal(const Plex::Properties& properties = modulePath, const Uri& address = anyUri)
{
    return refusalOf([&] { Plex::create(properties)->createPublisher<T>(address); });
}

constexpr const char* missing = ": cannot open shared object file: No such file or directory";

} // namespace

TEST(Plex, NamesTheLibraryOfATransportThatIsMissing)
{
    EXPECT_EQ(
        publisherRefusal<telltale::Value>({}, Uri("smoke+signal://hill/fire")),
        std::string("No transport for Uri scheme \"smoke+signal\": Cannot load library libplex-smoke.so for "
                    "symbol plex_create_transport_smoke: libplex-smoke.so") +
            missing);
    EXPECT_EQ(
        refusalOf([] { Plex::create()->createDataEntity<telltale::Value>("smoke"); }),
        std::string("No transport for Uri scheme \"smoke\": Cannot load library libplex-smoke.so for symbol "
                    "plex_create_transport_smoke: libplex-smoke.so") +
            missing);
}

TEST(Plex, RefusesAUriWithoutAScheme)
{
    EXPECT_EQ(publisherRefusal<telltale::Value>(modulePath, Uri()),
              "Uri names no transport: it has no scheme");
}

TEST(Plex, NamesTheLibraryOfAModuleThatIsMissing)
{
    EXPECT_EQ(publisherRefusal<nowhere::Value>(),
              std::string("Cannot load library libplex-dds-nowhere.so for symbol "
                          "generated_dds_Publisher_nowhere_Value: libplex-dds-nowhere.so") +
                  missing);
}

TEST(Plex, NamesTheModuleAfterTheWholeNamespace)
{
    EXPECT_THAT(publisherRefusal<nowhere::inner::Value>(),
                StartsWith("Cannot load library libplex-dds-nowhere_inner.so for symbol "
                           "generated_dds_Publisher_nowhere_inner_Value: "));
}

TEST(Plex, NamesAModuleLibraryThatIsNone)
{
    const TemporaryDirectory directory;
    const auto scrap = directory.write("libplex-dds-nowhere.so", std::string(4096, 'x'));
    EXPECT_EQ(publisherRefusal<nowhere::Value>({{"dds.module.path", directory.path()}}),
              "Cannot load library " + scrap + " for symbol generated_dds_Publisher_nowhere_Value: " + scrap +
                  ": invalid ELF header");
}

TEST(Plex, NamesTheSymbolThatAModuleLacksForEveryKind)
{
    const auto plex = Plex::create(modulePath);
    const std::vector<std::pair<std::string, std::function<void()>>> kinds{
        {"Publisher",
         [&] {
             plex->createPublisher<hollow::Value>(anyUri);
         }},
        {"Subscriber",
         [&] {
             plex->createSubscriber<hollow::Value>(anyUri);
         }},
        {"MrvSubscriber",
         [&] {
             plex->createMrvSubscriber<hollow::Value>(anyUri);
         }},
        {"DataEntity", [&] {
             plex->createDataEntity<hollow::Value>();
         }}};
    for (const auto& [kind, create] : kinds) {
        const auto symbol = "generated_dds_" + kind + "_hollow_Value";
        const auto text = refusalOf(create);
        EXPECT_THAT(text, StartsWith("Library libplex-dds-hollow.so lacks symbol " + symbol + ": "));
        EXPECT_THAT(text, HasSubstr("undefined symbol: " + symbol));
    }
}

TEST(Plex, RefusesAValueTypeWithoutANamespace)
{
    EXPECT_EQ(publisherRefusal<Homeless>(),
              "Value type Homeless belongs to no interface module: it has no namespace");
}

TEST(Plex, HandsItsArgumentsToTheModulesFactory)
{
    const auto plex = Plex::create(modulePath);
    const QoSList qos{std::make_shared<Deadline>(std::chrono::seconds(1)),
                      std::make_shared<Latency>(std::chrono::seconds(2))};
    EXPECT_EQ(refusalOf([&] { plex->createPublisher<telltale::Value>(anyUri, qos, {{"a", "1"}}); }),
              "Publisher dds+ps://0/topic qos:2 plex:given a=1");
    EXPECT_EQ(refusalOf([&] { plex->createSubscriber<telltale::Value>(anyUri, qos, {{"a", "1"}}); }),
              "Subscriber dds+ps://0/topic qos:2 plex:given a=1");
    EXPECT_EQ(refusalOf([&] { plex->createMrvSubscriber<telltale::Value>(anyUri, {}, {{"a", "1"}}); }),
              "MrvSubscriber dds+ps://0/topic qos:0 plex:given a=1");
    EXPECT_EQ(plex->createDataEntity<telltale::Value>()->number, 42);
}

TEST(Plex, FindsItsTransportBySchemesOfAnyCase)
{
    EXPECT_EQ(publisherRefusal<telltale::Value>(modulePath, Uri("DDS+PS://0/topic")),
              "Publisher DDS+PS://0/topic qos:0 plex:given");
    EXPECT_EQ(Plex::create(modulePath)->createDataEntity<telltale::Value>("Dds+Ps")->number, 42);
}

TEST(Plex, LeavesTheRulesOfAUriToItsTransport)
{
    EXPECT_EQ(publisherRefusal<telltale::Value>(modulePath, Uri("dds://0")),
              "Publisher dds://0 qos:0 plex:given");
}

TEST(Plex, GivesEachEntityItsOwnPropertiesUnderThoseOfTheCall)
{
    const auto plex = Plex::create({{"dds.module.path", modules}, {"a", "instance"}, {"b", "instance"}});
    const Plex::Properties ofCall{{"b", "call"}, {"c", "call"}};
    const std::string given = " dds+ps://0/topic qos:0 plex:given ";
    EXPECT_EQ(refusalOf([&] { plex->createPublisher<telltale::Value>(anyUri, {}, ofCall); }),
              "Publisher" + given + "a=instance b=call c=call");
    EXPECT_EQ(refusalOf([&] { plex->createSubscriber<telltale::Value>(anyUri, {}, ofCall); }),
              "Subscriber" + given + "a=instance b=call c=call");
    EXPECT_EQ(refusalOf([&] { plex->createMrvSubscriber<telltale::Value>(anyUri, {}, ofCall); }),
              "MrvSubscriber" + given + "a=instance b=call c=call");
    EXPECT_EQ(refusalOf([&] { plex->createPublisher<telltale::Value>(anyUri); }),
              "Publisher" + given + "a=instance b=instance");
}

TEST(Plex, LooksForModulesWhereTheCallSays)
{
    const TemporaryDirectory directory;
    const auto scrap = directory.write("libplex-dds-telltale.so", "this is no library\n");
    const auto plex = Plex::create({{"dds.module.path", directory.path()}});
    EXPECT_THAT(refusalOf([&] { plex->createPublisher<telltale::Value>(anyUri); }),
                StartsWith("Cannot load library " + scrap));
    EXPECT_THAT(refusalOf([&] { plex->createPublisher<telltale::Value>(anyUri, {}, modulePath); }),
                StartsWith("Publisher "));
}

TEST(Plex, LooksForModulesInAListOfDirectories)
{
    EXPECT_THAT(
        publisherRefusal<telltale::Value>({{"dds.module.path", ":/no/such/directory::" + modules + ":"}}),
        StartsWith("Publisher "));
}

TEST(Plex, MayBeUsedByThreadsAtOnce)
{
    const auto plex = Plex::create(modulePath);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([plex] { EXPECT_EQ(plex->createDataEntity<telltale::Value>()->number, 42); });
    }
}

} // namespace plex::test
