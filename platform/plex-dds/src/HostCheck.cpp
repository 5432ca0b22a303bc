// SPDX-License-Identifier: Apache-2.0
#include "HostCheck.hpp"

#include <plex/fastdds/Transports.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <ifaddrs.h>
#include <iterator>
#include <memory>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace ovra::plex::hostcheck
{

namespace
{

constexpr std::uint32_t highestPort = 65535;

/// Whether an interface that is up, can multicast and has an address is there; where the system does not
/// tell, it is taken for granted.
bool findsMulticastInterface()
{
    const auto interfaces = interfacesOfHost();
    return !interfaces || std::ranges::any_of(*interfaces, [](const Interface& interface) {
        return interface.isUp && interface.canMulticast;
    });
}

/// An address of IP as numbers. @returns empty: it is another one, or none.
std::string addressOf(const ifaddrs& entry)
{
    const int family = entry.ifa_addr == nullptr ? AF_UNSPEC : entry.ifa_addr->sa_family;
    if (family != AF_INET && family != AF_INET6) {
        return {};
    }
    std::array<char, NI_MAXHOST> text{};
    const socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    getnameinfo(entry.ifa_addr, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST);
    return text.data();
}

std::uint16_t firstPort(const Needs& needs)
{
    return static_cast<std::uint16_t>(std::min(needs.firstUnicastPort, highestPort));
}

/// Behind the last port of a domain's participants: where those of the next one begin, or where ports end.
std::uint16_t endOfPorts(const Needs& needs)
{
    constexpr std::uint32_t portsOfDomain = 240;
    return static_cast<std::uint16_t>(std::min(needs.firstUnicastPort + portsOfDomain, highestPort));
}

/// The first ports of the participants of a domain (RTPS 2.5, 9.6.2.3), as many as Fast DDS tries.
std::vector<std::uint16_t> unicastPorts(const Needs& needs)
{
    std::vector<std::uint16_t> ports;
    for (std::uint32_t port = firstPort(needs);
         port < endOfPorts(needs) && ports.size() < needs.mostPortsTried; port += needs.portsApart) {
        ports.push_back(static_cast<std::uint16_t>(port));
    }
    return ports;
}

template <class Number>
Number numberIn(const std::string& digits, int base)
{
    Number number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return number;
}

/// The local ports in the kernel's table with their owners: a line's second field ends with the port in
/// hexadecimal digits, its eighth is the owner.
std::map<std::uint16_t, uid_t> portsIn(const std::string& udpTable)
{
    std::map<std::uint16_t, uid_t> ports;
    std::ifstream table(udpTable);
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        const std::vector<std::string> fields{std::istream_iterator<std::string>(words), {}};
        if (fields.size() < 8 || fields[1].find(':') == std::string::npos) {
            continue;
        }
        const std::string port = fields[1].substr(fields[1].find(':') + 1);
        ports.emplace(numberIn<std::uint16_t>(port, 16), numberIn<uid_t>(fields[7], 10));
    }
    return ports;
}

void lookAtSharedMemory(const Needs& needs, const std::string& directory, Host& host)
{
    struct stat status{};
    host.hasSharedMemory = stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    host.mayWriteSharedMemory = host.hasSharedMemory && access(directory.c_str(), W_OK | X_OK) == 0;
    struct statvfs room{};
    const bool hasLimit =
        statvfs(directory.c_str(), &room) == 0 && room.f_blocks > 0; // 0 where there is none
    if (host.hasSharedMemory && hasLimit) {
        host.freeSharedMemory = std::uint64_t{room.f_bavail} * room.f_frsize;
    }
    const auto prefix = directory + "/" + fastdds::sharedMemoryPrefix + "port";
    const auto end = host.udpPorts.lower_bound(endOfPorts(needs));
    for (auto bound = host.udpPorts.lower_bound(firstPort(needs)); bound != end; ++bound) {
        if (bound->second != host.user &&
            stat((prefix + std::to_string(bound->first)).c_str(), &status) == 0) {
            host.sharedMemoryPorts.insert(bound->first);
        }
    }
}

std::string yearOf(WallClock::time_point time)
{
    const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(time));
    return std::to_string(static_cast<int>(date.year()));
}

void addNetworkFindings(const Needs& needs, const Host& host, std::vector<Finding>& found)
{
    if (!host.canMulticast) {
        found.push_back(
            {"multicast",
             "No network interface is up that can multicast, so programs on other hosts are not found",
             "start this one when the network is there"});
    }
    const auto ports = unicastPorts(needs);
    const auto isBound = [&](std::uint16_t port) {
        return host.udpPorts.contains(port);
    };
    if (!ports.empty() && std::ranges::all_of(ports, isBound)) {
        const auto domain = std::to_string(needs.domain);
        found.push_back({"ports of domain " + domain,
                         "All " + std::to_string(ports.size()) + " ports that participants of domain " +
                             domain + " have on a host are taken, so a further one may hear nothing",
                         "use fewer processes, or another domain for some"});
    }
}

void addSharedMemoryFindings(const Needs& needs, const Host& host, std::vector<Finding>& found)
{
    const std::string consequence = ", so values go to other processes of this host by UDP only";
    if (!host.hasSharedMemory) {
        found.push_back({"shared memory", "There is no /dev/shm" + consequence, "mount a tmpfs there"});
    } else if (!host.mayWriteSharedMemory) {
        found.push_back(
            {"shared memory", "This user may not write to /dev/shm" + consequence, "allow it (mode 1777)"});
    } else if (host.freeSharedMemory < needs.sharedMemoryBytes) {
        found.push_back({"shared memory",
                         "/dev/shm has " + std::to_string(host.freeSharedMemory) + " bytes left of the " +
                             std::to_string(needs.sharedMemoryBytes) + " that a participant needs" +
                             consequence,
                         "enlarge it, or remove what killed programs have left there"});
    }
}

/// What root writes to shared memory nobody else may open, while it may tell others that it is there.
void addUserFindings(const Needs& needs, const Host& host, std::vector<Finding>& found)
{
    for (const auto port : host.sharedMemoryPorts) {
        const auto owner = host.udpPorts.at(port);
        if ((owner == 0) != (host.user == 0)) {
            const auto domain = std::to_string(needs.domain);
            found.push_back({"users of domain " + domain,
                             "Programs of root and of user " + std::to_string(std::max(owner, host.user)) +
                                 " are in domain " + domain +
                                 " on this host: what root publishes, the other does not hear, as it may not "
                                 "open root's shared memory",
                             "run them as one user, or without shared memory"});
            return;
        }
    }
}

} // namespace

std::optional<std::vector<Interface>> interfacesOfHost()
{
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        return std::nullopt;
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> all(first, freeifaddrs);
    std::vector<Interface> interfaces;
    for (const auto* entry = first; entry != nullptr; entry = entry->ifa_next) {
        const std::string address = addressOf(*entry);
        if (address.empty()) {
            continue;
        }
        auto found = std::ranges::find(interfaces, entry->ifa_name, &Interface::name);
        if (found == interfaces.end()) {
            found = interfaces.insert(found, {entry->ifa_name,
                                              {},
                                              (entry->ifa_flags & IFF_UP) != 0,
                                              (entry->ifa_flags & IFF_MULTICAST) != 0});
        }
        found->addresses.push_back(address);
    }
    return interfaces;
}

Needs needsOf(std::uint32_t domain, const eprosima::fastdds::dds::DomainParticipantQos& qos)
{
    Needs needs;
    needs.domain = domain;
    const auto& port = qos.wire_protocol().port;
    const std::uint32_t base = port.portBase + port.domainIDGain * domain;
    needs.firstUnicastPort = base + port.offsetd1;
    needs.portsApart = std::max<std::uint32_t>(port.participantIDGain, 1);
    needs.mostPortsTried = std::size_t{qos.wire_protocol().builtin.mutation_tries} + 1;
    needs.receiveBufferBytes = qos.transport().listen_socket_buffer_size;
    if (qos.transport().use_builtin_transports && !fastdds::transportsOfEnvironment().empty()) {
        return needs; // nobody but Fast DDS knows which they are
    }
    for (const auto& transport : fastdds::transportsOf(qos)) {
        needs.usesUdp = needs.usesUdp || transport.kind.starts_with("UDP");
        needs.sharedMemoryBytes += transport.sharedMemoryBytes;
        needs.receiveBufferBytes = std::max(needs.receiveBufferBytes, transport.receiveBufferBytes);
    }
    return needs;
}

Host lookAtHost(const Needs& needs, const std::string& sharedMemory, const std::string& udpTable)
{
    Host host;
    host.now = WallClock::now();
    host.user = geteuid();
    if (needs.usesUdp) {
        host.canMulticast = findsMulticastInterface();
        host.udpPorts = portsIn(udpTable);
    }
    if (needs.sharedMemoryBytes > 0) {
        lookAtSharedMemory(needs, sharedMemory, host);
    }
    return host;
}

std::vector<Finding> findings(const Needs& needs, const Host& host)
{
    using namespace std::chrono_literals;
    constexpr std::chrono::sys_days earliest = 2025y / 1 / 1; // clocks that nobody has set are behind that
    std::vector<Finding> found;
    if (needs.usesUdp) {
        addNetworkFindings(needs, host, found);
    }
    if (needs.sharedMemoryBytes > 0) {
        addSharedMemoryFindings(needs, host, found);
        addUserFindings(needs, host, found);
    }
    if (host.now < earliest) {
        found.push_back({"clock",
                         "The clock of this host is in the year " + yearOf(host.now) +
                             ", so subscribers elsewhere may drop its values as too old",
                         "set it, by NTP or PTP"});
    }
    return found;
}

} // namespace ovra::plex::hostcheck
