// SPDX-License-Identifier: Apache-2.0
#include "RunPair.hpp"

#include "Asked.hpp"
#include "LogCapture.hpp"
#include "ProcessResources.hpp"
#include "Stage.hpp"
#include "Watchdog.hpp"

#include <iostream>
#include <sstream>

namespace plex::test::callbacks
{

namespace
{

/// What the operation must have thrown.
std::string expectedOf(const Outcome& outcome, const Stage& stage)
{
    if (outcome.kind != Outcome::Kind::Refused) {
        return {};
    }
    std::string text = outcome.text;
    if (const auto at = text.find("<uri>"); at != std::string::npos) {
        text.replace(at, 5, stage.uri.string());
    }
    return "IllegalStateException: " + text;
}

/// That a publisher and a subscriber which have nothing to do with the callback find each other: no lock is
/// held.
void expectOthersWork(Stage& stage)
{
    const auto plex = Plex::create(Stage::properties(stage.context.thread));
    const auto publisher = plex->createPublisher<Channel>(stage.elsewhere);
    const auto subscriber = plex->createSubscriber<Channel>(stage.elsewhere);
    std::atomic<int> heard = 0;
    const auto subscription = subscriber->subscribeAsync(Filter(), [&](Reader&, const Event&) { ++heard; });
    Stage::publish(*publisher, number::witness);
    stage.expect(waitFor([&] { return heard > 0; }, 5s), "what is made afterwards does not work");
}

/// Warnings, for example of values that nobody acknowledged or entities that were left behind.
void expectNoWarning(Stage& stage, const LogCapture& log)
{
    for (const auto& record : log.records()) {
        stage.expect(record.level != log4cplus::WARN_LOG_LEVEL, "logged: " + record.text);
    }
}

void play(Stage& stage, const Pair& pair, Watchdog& watchdog)
{
    const Asked& asked = askedOf(pair.asked);
    watchdog.enter("before the callback");
    asked.prepare(stage);
    watchdog.enter("in the callback, or in what runs it");
    const std::string thrown = stage.fire([&] { asked.ask(stage); });
    const std::string expected = expectedOf(pair.outcome, stage);
    stage.expect(thrown == expected, "expected \"" + expected + "\", but it threw \"" + thrown + "\"");
    watchdog.enter("in what is done after the callback");
    if (thrown.empty() && expected.empty()) {
        asked.check(stage);
    }
    watchdog.enter("in what others do after the callback");
    expectOthersWork(stage);
    watchdog.enter("in dropping everything");
}

/// Fast DDS keeps some things for the process from the first participant on.
ProcessResources resourcesKept(Thread thread)
{
    Plex::create(Stage::properties(thread))->createPublisher<Channel>(Uri("dds+ps://96/callbacks/first"));
    return processResources();
}

std::vector<std::string> complaintsOf(const Pair& pair, Watchdog& watchdog)
{
    const auto before = resourcesKept(pair.context.thread);
    const LogCapture log;
    std::vector<std::string> complaints;
    {
        Stage stage(pair.context);
        play(stage, pair, watchdog);
        expectNoWarning(stage, log);
        complaints = stage.complaints;
    }
    if (!waitFor([&] { return processResources().isWithin(before); }, 5s)) {
        std::ostringstream text;
        text << "left behind: " << processResources() << " instead of " << before;
        complaints.push_back(text.str());
    }
    watchdog.enter("at the end of the process");
    return complaints;
}

} // namespace

int runPair(const Pair& pair)
{
    static Watchdog watchdog("at the start", patience); // until the process has ended
    const auto complaints = complaintsOf(pair, watchdog);
    for (const auto& complaint : complaints) {
        std::cerr << pair.word() << ": " << complaint << '\n';
    }
    return complaints.empty() ? 0 : 1;
}

} // namespace plex::test::callbacks
