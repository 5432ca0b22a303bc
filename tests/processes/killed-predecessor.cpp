// SPDX-License-Identifier: Apache-2.0
// A subscriber dies inside a callback, and another process takes its place: over shared memory both have the
// same queue by name, but not the same queue. Succeeds when each successor hears a publisher, that goes on
// all the time, at once; ends with 77 where Fast DDS is of a version for which that is not so.
#include <plex/Plex.hpp>
#include <plex/dds/Status.hpp>
#include <plex/fastdds/Generation.hpp>
#include <vexstubif/AltAz.hpp>

#include <ChildProcess.hpp>
#include <WaitFor.hpp>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace
{

using namespace std::chrono_literals;
using ovra::plex::Plex;
using vexstubif::AltAz;
namespace ps = ovra::plex::ps;

constexpr int notConcerned = 77;

/// A domain of its own, for ports that no other process has.
const char* const topic = "dds+ps://185/processes/killed-predecessor";

enum class Files { AllButQueues, All };

/// Removes what this process, which ends, has in shared memory: Fast DDS does not, where one was killed.
void removeFiles(Files which)
{
    const std::string directory = "/dev/shm/";
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const auto at = line.find(directory);
        const bool isQueue = line.find("_port") != std::string::npos;
        if (at != std::string::npos && (which == Files::All || !isQueue)) {
            const std::string name = line.substr(at + directory.size());
            for (const auto& file : {name, name + "_el", "sem." + name + "_mutex"}) {
                std::error_code ignored; // most have not all three, and are mapped in pieces
                std::filesystem::remove(directory + file, ignored);
            }
        }
    }
}

/// Ends with 0 when it hears within two seconds from when it is matched, much less than the three and more
/// that Fast DDS takes by itself.
int hear(bool dies)
{
    const auto plex = Plex::create({{"dds.callback.thread", "transport"}});
    const auto subscriber = plex->createSubscriber<AltAz>(ovra::plex::Uri(topic));
    std::atomic<bool> heard = false;
    const auto subscription =
        subscriber->subscribeAsync(ps::DataEventFilter<AltAz>(), [&](const auto&, const auto&) {
            if (dies) {
                removeFiles(Files::AllButQueues); // queues are what this is about
                std::raise(SIGKILL);
            }
            heard = true;
        });
    if (!ps::waitForMatched(*subscriber, 1, 60s)) {
        std::cerr << "the publisher is not discovered\n";
        return EXIT_FAILURE;
    }
    return plex::test::waitFor([&] { return heard.load(); }, 2s) ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// @returns the status of the child, as of waitpid().
int publishUntilItEnds(ps::Publisher<AltAz>& publisher, const char* role)
{
    plex::test::ChildProcess child({role});
    std::optional<int> status;
    while (!(status = child.exitStatus(10ms))) {
        publisher.publish(*publisher.createDataEntity(), 0ms);
    }
    return *status;
}

int publishToSuccessors()
{
    const auto plex = Plex::create();
    const auto publisher = plex->createPublisher<AltAz>(ovra::plex::Uri(topic));
    for (int round = 0; round < 2; ++round) {
        if (publishUntilItEnds(*publisher, "die") != SIGKILL) {
            std::cerr << "predecessor " << round << " did not die in its callback\n";
            return EXIT_FAILURE;
        }
        if (publishUntilItEnds(*publisher, "live") != 0) {
            std::cerr << "successor " << round << " does not hear the publisher\n";
            return EXIT_FAILURE;
        }
    }
    removeFiles(Files::All);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
#ifdef PLEX_FASTDDS_SENDS_LEFTOVERS
    return argc > 1 ? hear(argv[1] == std::string("die")) : publishToSuccessors();
#else
    (void)argc;
    (void)argv;
    return notConcerned;
#endif
}
