// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/Endpoint.hpp>

#include <log4cplus/loggingmacros.h>

/// What is logged of peers and losses, under "plexDdsDiscovery". Where both sides are of one process, the
/// subscriber's speaks, so that nothing is said twice.
namespace ovra::plex::ps::internal
{

namespace
{

log4cplus::Logger& logger()
{
    static auto& ofProcess = *new auto(log4cplus::Logger::getInstance("plexDdsDiscovery"));
    return ofProcess;
}

/// Whether the application has set up logging. If it has not, log4cplus complains of the first record, and
/// what is well is not worth that.
bool isListenedTo()
{
    return !log4cplus::Logger::getRoot().getAllAppenders().empty() || !logger().getAllAppenders().empty();
}

void recordInfo(const std::string& text)
{
    if (isListenedTo()) {
        LOG4CPLUS_INFO(logger(), text);
    }
}

std::string nameOf(const EntityStatus& status)
{
    return (status.isPublisher ? "The publisher of topic " : "The subscriber of topic ") + status.topic;
}

std::string nameOf(const Peer& peer, const EntityStatus& status)
{
    const std::string role = status.isPublisher ? "the subscriber" : "the publisher";
    if (peer.distance == Distance::SameProcess) {
        return role + " in the same process";
    }
    if (peer.process.empty() && peer.host.empty()) {
        return role + " " + peer.guid + (peer.vendor.empty() ? "" : " of " + peer.vendor);
    }
    return role + (peer.process.empty() ? "" : " in process " + peer.process) +
           (peer.host.empty() ? "" : " on host " + peer.host);
}

bool isToldByOther(const Peer& peer, const EntityStatus& status)
{
    return status.isPublisher && peer.distance == Distance::SameProcess;
}

std::string inWords(const std::vector<Refusal>& refusals)
{
    std::string text;
    for (const auto& refusal : refusals) {
        text += (text.empty() ? "" : "; ") + toString(refusal);
    }
    return text;
}

/// Where the other side's DDS goes by more policies than ours, it may refuse what we take for a match.
void warnOfOneSidedMatch(const Peer& peer, const EntityStatus& status)
{
    if (!peer.refusals.empty() && !peer.vendor.empty() && peer.vendor != "Fast DDS") {
        LOG4CPLUS_WARN(logger(), nameOf(status)
                                     << " is matched with " << nameOf(peer, status) << ", whose DDS ("
                                     << peer.vendor << ") may refuse it: " << inWords(peer.refusals));
    }
}

/// Whether a count that grows is to be told: as it doubles.
bool isWorthTelling(std::uint64_t count, std::uint64_t told)
{
    return count > 0 && count >= 2 * told && count != told;
}

} // namespace

void Endpoint::record(const EntityStatus& status)
{
    if (!recorded_) {
        if (status.matched.empty() && status.refused.empty() && status.counters.lost == 0 &&
            status.counters.rejected == 0) {
            return;
        }
        recorded_ = std::make_unique<Recorded>();
    }
    recordMatches(status);
    recordRefusals(status);
    recordLosses(status);
}

void Endpoint::recordMatches(const EntityStatus& status)
{
    std::map<std::string, std::string> now;
    for (const auto& peer : status.matched) {
        if (!isToldByOther(peer, status)) {
            const auto name = nameOf(peer, status);
            now.emplace(peer.guid, name);
            if (!recorded_->matched.contains(peer.guid)) {
                recordInfo(nameOf(status) + " is matched with " + name);
                warnOfOneSidedMatch(peer, status);
            }
        }
    }
    for (const auto& [guid, name] : recorded_->matched) {
        if (!now.contains(guid)) {
            recordInfo(nameOf(status) + " is no longer matched with " + name);
        }
    }
    recorded_->matched = std::move(now);
}

void Endpoint::recordRefusals(const EntityStatus& status)
{
    std::map<std::string, std::string> now;
    for (const auto& peer : status.refused) {
        if (!isToldByOther(peer, status)) {
            const auto reasons = inWords(peer.refusals);
            const auto told = recorded_->refused.find(peer.guid);
            if (told == recorded_->refused.end() || told->second != reasons) {
                LOG4CPLUS_WARN(logger(), nameOf(status) << " and " << nameOf(peer, status)
                                                        << " do not match: " << reasons);
            }
            now.emplace(peer.guid, reasons);
        }
    }
    recorded_->refused = std::move(now);
}

void Endpoint::recordLosses(const EntityStatus& status)
{
    const auto& now = status.counters;
    if (isWorthTelling(now.lost, recorded_->lost)) {
        recorded_->lost = now.lost;
        LOG4CPLUS_WARN(logger(), nameOf(status) << " has lost " << now.lost << " values so far");
    }
    if (isWorthTelling(now.rejected, recorded_->rejected)) {
        recorded_->rejected = now.rejected;
        LOG4CPLUS_WARN(logger(), nameOf(status) << " has rejected " << now.rejected
                                                << " values so far, for want of room: "
                                                << (now.rejectedBy.empty() ? "a limit" : now.rejectedBy)
                                                << " of the history is reached");
    }
}

} // namespace ovra::plex::ps::internal
