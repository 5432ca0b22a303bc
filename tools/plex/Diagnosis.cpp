// SPDX-License-Identifier: Apache-2.0
#include "Diagnosis.hpp"

#include "Description.hpp"
#include "Pairs.hpp"
#include "Words.hpp"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>

namespace ovra::plex::tool
{

namespace
{

void addLeftovers(const std::vector<SharedFiles>& leftovers, std::vector<Problem>& problems)
{
    if (leftovers.empty()) {
        return;
    }
    std::size_t files = 0;
    std::uint64_t bytes = 0;
    for (const auto& each : leftovers) {
        files += each.files.size();
        bytes += each.bytes;
    }
    problems.push_back({"shared memory",
                        "Programs that are gone have left " + counted(files, "file") +
                            " in /dev/shm, which take " + inBytes(static_cast<double>(bytes)) +
                            " and are taken over in the size that they have",
                        "plex doctor --clean"});
}

void addBuffers(const Machine& machine, std::vector<Problem>& problems)
{
    const auto asked = machine.needs.receiveBufferBytes;
    if (machine.buffers.receiveMost && *machine.buffers.receiveMost < asked) {
        problems.push_back({"socket buffers",
                            "The profile asks for receive buffers of " + inBytes(asked) +
                                ", and the system gives " +
                                inBytes(static_cast<double>(*machine.buffers.receiveMost)),
                            "sysctl -w net.core.rmem_max=" + std::to_string(asked)});
    }
    if (machine.dropped > 0) {
        problems.push_back({"socket buffers",
                            "The system drops packets, " + std::to_string(machine.dropped) +
                                " since this command began, for want of room in receive buffers",
                            "sysctl -w net.core.rmem_max=8388608 net.core.rmem_default=8388608, then start "
                            "the programs again"});
    }
}

/// Generations of Fast DDS by host. Whose host is unknown counts nowhere.
std::map<std::string, std::set<std::string>> generationsByHost(const Scene& scene)
{
    std::map<std::string, std::set<std::string>> generations;
    for (const auto& implementation : implementationsOf(scene)) {
        if (implementation.vendor != "Fast DDS" || implementation.version.empty()) {
            continue;
        }
        for (const auto& host : implementation.hosts) {
            generations[host].insert(implementation.version.substr(0, implementation.version.find('.')));
        }
    }
    return generations;
}

/// What makes a pair match that a policy keeps apart.
std::string cureOf(const ps::Refusal& refusal)
{
    if (refusal.policy == "type name") {
        return "give both the same type, or one of them another topic";
    }
    if (refusal.policy == "key") {
        return "make both from the same definition of the type";
    }
    if (refusal.policy == "partition") {
        return "have both in a partition of the same name";
    }
    return refusal.policy + ": have the writer offer " + refusal.asked + ", or the reader ask for " +
           refusal.offered;
}

Problem problemOf(const Scene& scene, const Pair& pair)
{
    std::vector<std::string> reasons;
    std::vector<std::string> cures;
    reasons.reserve(pair.refusals.size());
    cures.reserve(pair.refusals.size());
    for (const auto& refusal : pair.refusals) {
        reasons.push_back(toString(refusal));
        cures.push_back(cureOf(refusal));
    }
    return {"topic " + pair.writer.topic,
            "The writer in " + shortPlace(scene, pair.writer.guid) + " and the reader in " +
                shortPlace(scene, pair.reader.guid) + " are not matched: " + joined(reasons, "; "),
            joined(cures, "; ")};
}

} // namespace

std::vector<Implementation> implementationsOf(const Scene& scene)
{
    std::map<std::string, Implementation> found;
    for (const auto& [prefix, participant] : scene.participants) {
        const Place place = placeOf(participant);
        Implementation each{place.vendor, participant.version, {}, 0};
        if (each.vendor == "Fast DDS" && each.version.empty() && fastdds::tellsVersions) {
            each.version = "2";
        }
        auto& known = found.try_emplace(each.name(), each).first->second;
        ++known.participants;
        if (!place.host.empty() && std::ranges::find(known.hosts, place.host) == known.hosts.end()) {
            known.hosts.push_back(place.host);
        }
    }
    std::vector<Implementation> result;
    result.reserve(found.size());
    for (auto& [name, implementation] : found) {
        result.push_back(std::move(implementation));
    }
    return result;
}

std::vector<Problem> problemsOf(const Machine& machine)
{
    std::vector<Problem> problems;
    for (const auto& finding : hostcheck::findings(machine.needs, machine.host)) {
        problems.push_back({finding.cause, finding.problem, finding.cure});
    }
    for (const auto& interface : machine.deafInterfaces) {
        problems.push_back({"multicast",
                            "Multicast that is sent by " + interface +
                                " does not come back, so programs may not find each other",
                            "allow UDP to and from 239.255.0.1 in the firewall of this host"});
    }
    addLeftovers(machine.leftovers, problems);
    addBuffers(machine, problems);
    return problems;
}

std::vector<Problem> problemsOf(const Scene& scene)
{
    std::vector<Problem> problems;
    for (const auto& [host, generations] : generationsByHost(scene)) {
        if (generations.size() > 1) {
            problems.push_back(
                {"generations",
                 "Programs of Fast DDS " + joined({generations.begin(), generations.end()}, " and ") +
                     " on " + host + " do not share memory, so values go from one to the other by UDP only",
                 "build all of them against one generation"});
        }
    }
    for (const auto& topic : scene.topics()) {
        for (const auto& pair : pairsOf(scene, topic)) {
            if (!pair.isMatched) {
                problems.push_back(problemOf(scene, pair));
            }
        }
    }
    return problems;
}

} // namespace ovra::plex::tool
