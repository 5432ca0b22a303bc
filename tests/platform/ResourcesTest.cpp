// SPDX-License-Identifier: Apache-2.0
#include "Refusal.hpp"
#include "TemporaryDirectory.hpp"

#include <plex/Plex.hpp>
#include <vexstubif/AltAz.hpp>

#include <gtest/gtest.h>

#include <ProcessResources.hpp>
#include <TestTopic.hpp>
#include <WaitFor.hpp>
#include <functional>
#include <memory>
#include <string>

namespace absent
{

struct Value {
};

} // namespace absent

namespace plex::test
{

namespace
{

using ovra::plex::Plex;
using ovra::plex::Uri;
using vexstubif::AltAz;

} // namespace

/// Calls that fail must leave neither threads nor file descriptors behind.
class FailedCall : public testing::Test
{
protected:
    /// Fast DDS keeps some things for the process from the first participant on.
    FailedCall() { plex_->createPublisher<AltAz>(testUri()); }

    void expectNothingLeft(const std::function<void()>& call) const
    {
        const auto before = processResources();
        for (int i = 0; i < 3; ++i) {
            refusalOf(call);
        }
        EXPECT_TRUE(waitFor([&] { return processResources().isWithin(before); }, std::chrono::seconds(2)))
            << processResources() << " instead of " << before;
    }

    /// The same for each kind of entity.
    void expectNothingLeft(const Uri& uri, const Plex::Properties& properties) const
    {
        expectNothingLeft([&] { plex_->createPublisher<AltAz>(uri, {}, properties); });
        expectNothingLeft([&] { plex_->createSubscriber<AltAz>(uri, {}, properties); });
        expectNothingLeft([&] { plex_->createMrvSubscriber<AltAz>(uri, {}, properties); });
    }

    const std::shared_ptr<Plex> plex_ = Plex::create();
    const TemporaryDirectory directory_;
};

TEST_F(FailedCall, OfAnUnknownTransportLeavesNothingBehind)
{
    expectNothingLeft(Uri("smoke+ps://0/topic"), {});
}

TEST_F(FailedCall, OfAnIllFormedUriLeavesNothingBehind)
{
    for (const char* const text :
         {"dds+ps://0", "dds+rpc://0/topic", "dds+ps://0/topic?q", "dds+ps://233/topic"}) {
        expectNothingLeft(Uri(text), {});
    }
}

TEST_F(FailedCall, OfAModuleThatIsMissingLeavesNothingBehind)
{
    expectNothingLeft([&] { plex_->createPublisher<absent::Value>(testUri()); });
}

TEST_F(FailedCall, OfAModuleLibraryThatIsNoneLeavesNothingBehind)
{
    directory_.write("libplex-dds-absent.so", std::string(4096, 'x'));
    const Plex::Properties properties{{"dds.module.path", directory_.path()}};
    expectNothingLeft([&] { plex_->createPublisher<absent::Value>(testUri(), {}, properties); });
}

TEST_F(FailedCall, OfAProfileFileThatDoesNotLoadLeavesNothingBehind)
{
    for (const auto& file : {std::string("/no/such/file.xml"), directory_.path(),
                             directory_.write("text.xml", "reliable please\n")}) {
        expectNothingLeft(testUri(), {{"dds.qos.profile.file", file}});
    }
}

TEST_F(FailedCall, OfAMissingProfileLeavesNothingBehind)
{
    expectNothingLeft(testUri(), {{"dds.qos.profile.library", "nowhere"}});
}

TEST_F(FailedCall, AfterTheParticipantWasMadeLeavesNothingBehind)
{
    const auto library = testName();
    const auto file = directory_.write(
        "profiles.xml", "<dds><profiles xmlns=\"http://www.eprosima.com\"><participant profile_name=\"" +
                            library + ".participant\"/></profiles></dds>");
    expectNothingLeft(testUri(), {{"dds.qos.profile.file", file}, {"dds.qos.profile.library", library}});
}

TEST_F(FailedCall, OfABadPropertyLeavesNothingBehind)
{
    const Plex::Properties properties{{"dds.wait_for_ack.timeout_ms", "soon"}};
    expectNothingLeft([&] { plex_->createPublisher<AltAz>(testUri(), {}, properties); });
}

} // namespace plex::test
