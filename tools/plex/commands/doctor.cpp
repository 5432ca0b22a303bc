// SPDX-License-Identifier: Apache-2.0
#include "../Description.hpp"
#include "../Diagnosis.hpp"
#include "../Interrupt.hpp"
#include "../Output.hpp"
#include "../Pairs.hpp"
#include "../Printable.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <memory>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

/// What was seen, and what of it is wrong.
struct Report {
    std::uint32_t domain = 0;
    Machine machine;
    std::optional<std::uint64_t> droppedBefore; ///< packets, since the host started
    std::size_t filesInUse = 0;                 ///< of Fast DDS, in shared memory
    std::size_t filesOfOthers = 0;              ///< of which the system does not tell who holds them
    std::optional<std::vector<SharedFiles>> removed;
    Scene scene;
    std::vector<Problem> problems;
};

std::size_t filesOf(const std::vector<SharedFiles>& all, Holder holder)
{
    std::size_t count = 0;
    for (const auto& files : all) {
        count += files.holder == holder ? files.files.size() : 0;
    }
    return count;
}

std::uint64_t bytesOf(const std::vector<SharedFiles>& all)
{
    std::uint64_t bytes = 0;
    for (const auto& files : all) {
        bytes += files.bytes;
    }
    return bytes;
}

dds::DomainParticipantQos usualQos()
{
    const auto factory = dds::DomainParticipantFactory::get_shared_instance();
    factory->load_profiles();
    dds::DomainParticipantQos qos;
    factory->get_default_participant_qos(qos);
    return qos;
}

/// Takes part in the domain to see what is there. It is a problem itself where that fails.
void lookAtDomain(Report& report)
{
    try {
        Domain domain(report.domain, "plex doctor");
        domain.settle();
        report.scene = domain.scene();
        report.problems = problemsOf(report.scene);
    } catch (const Failure& failure) {
        report.problems.push_back({"domain " + std::to_string(report.domain), failure.what(),
                                   "see to what else is wrong with this host first"});
    }
}

void lookAtMulticast(Machine& machine)
{
    for (const auto& interface : machine.interfaces) {
        if (machine.needs.usesUdp && interface.isUp && interface.canMulticast &&
            !hearsItsMulticast(interface.name)) {
            machine.deafInterfaces.push_back(interface.name);
        }
    }
}

/// Removes leftovers, and leaves in the list what can not be removed.
void clean(Report& report)
{
    auto& leftovers = report.machine.leftovers;
    auto stubborn = remove(leftovers);
    std::erase_if(leftovers, [&](const SharedFiles& each) {
        return std::ranges::find(stubborn, each.name, &SharedFiles::name) != stubborn.end();
    });
    report.removed = std::exchange(leftovers, std::move(stubborn));
}

Report examine(const DoctorOptions& options)
{
    Report report;
    report.domain = options.domain;
    auto& machine = report.machine;
    const auto filesBefore = sharedFilesIn();
    report.droppedBefore = droppedPackets();
    machine.needs = hostcheck::needsOf(options.domain, usualQos());
    machine.host = hostcheck::lookAtHost(machine.needs);
    machine.interfaces = hostcheck::interfacesOfHost().value_or(std::vector<hostcheck::Interface>());
    machine.buffers = socketBuffers();
    lookAtMulticast(machine);
    lookAtDomain(report);
    const auto files = sharedFilesIn();
    report.filesInUse = filesOf(files, Holder::Living);
    report.filesOfOthers = filesOf(files, Holder::Unknown);
    machine.leftovers = leftoversOf(filesBefore, files);
    if (options.clean) {
        clean(report);
    }
    const auto before = report.droppedBefore.value_or(0);
    machine.dropped = std::max(droppedPackets().value_or(before), before) - before;
    const auto ofHost = problemsOf(machine);
    report.problems.insert(report.problems.begin(), ofHost.begin(), ofHost.end());
    return report;
}

// --- For programs ------------------------------------------------------------------------------------------

Json toJson(const std::optional<std::uint64_t>& number)
{
    return number ? Json(*number) : Json();
}

Json interfacesJson(const Machine& machine)
{
    Json json = Json::array();
    for (const auto& interface : machine.interfaces) {
        const bool isDeaf =
            std::ranges::find(machine.deafInterfaces, interface.name) != machine.deafInterfaces.end();
        json.push_back({{"name", interface.name},
                        {"addresses", interface.addresses},
                        {"up", interface.isUp},
                        {"multicast", interface.canMulticast && !isDeaf}});
    }
    return json;
}

Json machineJson(const Report& report)
{
    const auto& machine = report.machine;
    Json memory{{"filesInUse", report.filesInUse},
                {"filesOfOthers", report.filesOfOthers},
                {"filesLeft", filesOf(machine.leftovers, Holder::Nobody)},
                {"bytesLeft", bytesOf(machine.leftovers)}};
    if (report.removed) {
        memory["filesRemoved"] = filesOf(*report.removed, Holder::Nobody);
        memory["bytesRemoved"] = bytesOf(*report.removed);
    }
    return {{"interfaces", interfacesJson(machine)},
            {"sharedMemory", memory},
            {"socketBuffers",
             {{"receiveMost", toJson(machine.buffers.receiveMost)},
              {"receiveDefault", toJson(machine.buffers.receiveDefault)},
              {"sendMost", toJson(machine.buffers.sendMost)},
              {"sendDefault", toJson(machine.buffers.sendDefault)}}},
            {"droppedPackets", toJson(report.droppedBefore)}};
}

Json toJson(const Report& report)
{
    Json json{{"domain", report.domain},
              {"machine", machineJson(report)},
              {"implementations", Json::array()},
              {"problems", Json::array()}};
    for (const auto& each : implementationsOf(report.scene)) {
        json["implementations"].push_back({{"vendor", each.vendor},
                                           {"version", each.version},
                                           {"participants", each.participants},
                                           {"hosts", each.hosts}});
    }
    for (const auto& problem : report.problems) {
        json["problems"].push_back({{"area", problem.area}, {"text", problem.text}, {"cure", problem.cure}});
    }
    return json;
}

// --- For people --------------------------------------------------------------------------------------------

std::string inWords(const hostcheck::Interface& interface)
{
    std::string text;
    for (const auto& address : interface.addresses) {
        text += (text.empty() ? "" : ", ") + address;
    }
    return text + (interface.isUp ? "" : ", down") + (interface.canMulticast ? "" : ", no multicast");
}

std::string inWords(const std::optional<std::uint64_t>& bytes)
{
    return bytes ? inBytes(static_cast<double>(*bytes)) : "?";
}

void showMachine(const Report& report)
{
    const auto& machine = report.machine;
    std::vector<std::vector<std::string>> rows;
    rows.reserve(machine.interfaces.size());
    for (const auto& interface : machine.interfaces) {
        rows.push_back({"  " + interface.name, inWords(interface)});
    }
    rows.push_back(
        {"  /dev/shm",
         counted(report.filesInUse, "file") + " of Fast DDS in use, " +
             std::to_string(filesOf(machine.leftovers, Holder::Nobody)) + " left" +
             (report.filesOfOthers == 0 ? ""
                                        : ", " + std::to_string(report.filesOfOthers) + " of other users")});
    if (report.removed) {
        rows.push_back({"", "removed " + counted(filesOf(*report.removed, Holder::Nobody), "file") + ", " +
                                inBytes(static_cast<double>(bytesOf(*report.removed)))});
    }
    rows.push_back({"  socket buffers", "receive " + inWords(machine.buffers.receiveDefault) + " to " +
                                            inWords(machine.buffers.receiveMost) + ", send " +
                                            inWords(machine.buffers.sendDefault) + " to " +
                                            inWords(machine.buffers.sendMost)});
    if (report.droppedBefore) {
        rows.push_back({"  dropped", counted(*report.droppedBefore, "packet") + " since the host started"});
    }
    writeLine("Host");
    for (const auto& line : aligned(rows)) {
        writeLine(line);
    }
}

void showDomain(const Report& report)
{
    std::size_t pairs = 0;
    for (const auto& topic : report.scene.topics()) {
        pairs += pairsOf(report.scene, topic).size();
    }
    std::vector<std::vector<std::string>> rows;
    for (const auto& each : implementationsOf(report.scene)) {
        std::string hosts;
        for (const auto& host : each.hosts) {
            hosts += (hosts.empty() ? " on " : ", ") + host;
        }
        rows.push_back({"  " + each.name(), counted(each.participants, "participant") + hosts});
    }
    rows.push_back({"  topics", std::to_string(report.scene.topics().size()) + ", with " +
                                    counted(pairs, "pair") + " of writer and reader"});
    writeLine("Domain " + std::to_string(report.domain));
    for (const auto& line : aligned(rows)) {
        writeLine(line);
    }
}

void showProblems(const Report& report)
{
    writeLine("");
    writeLine(report.problems.empty() ? coloured("Nothing is wrong", Colour::Green)
                                      : coloured(counted(report.problems.size(), "problem"), Colour::Bold));
    for (const auto& problem : report.problems) {
        writeLine("  " + coloured(printable(problem.area), Colour::Red) + ": " + printable(problem.text));
        writeLine("      cure: " + printable(problem.cure));
    }
}

} // namespace

ExitCode doctor(const DoctorOptions& options)
{
    const Report report = examine(options);
    if (isInterrupted()) {
        throw Failure(ExitCode::Failed, "interrupted before all was looked at");
    }
    if (options.json) {
        writeJson(toJson(report), 2);
    } else {
        showMachine(report);
        showDomain(report);
        showProblems(report);
    }
    return report.problems.empty() ? ExitCode::Done : ExitCode::Wrong;
}

} // namespace ovra::plex::tool
