// SPDX-License-Identifier: Apache-2.0
#include "HostNetwork.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <fstream>
#include <iterator>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace ovra::plex::tool
{

namespace
{

/// A socket of UDP over IPv4.
class Socket
{
public:
    Socket() = default;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }

    int number() const { return number_; }

    /// @returns whether the system agrees.
    template <class Value>
    bool set(int option, const Value& value) const
    {
        return setsockopt(number_, IPPROTO_IP, option, &value, sizeof value) == 0;
    }

private:
    int number_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

/// As a call of the system wants addresses.
sockaddr* general(sockaddr_in& address)
{
    return reinterpret_cast<sockaddr*>(&address); // NOLINT(*-reinterpret-cast): as POSIX has it
}

/// The group to which participants announce themselves (RTPS 2.5, 9.6.2.4.1).
in_addr groupOfAnnouncements()
{
    in_addr group{};
    inet_pton(AF_INET, "239.255.0.1", &group);
    return group;
}

/// Joins the group on an interface, at a port that nobody else has. @returns whether the system agrees.
bool join(const Socket& socket, const std::string& interface, sockaddr_in& address)
{
    ip_mreqn membership{};
    membership.imr_multiaddr = groupOfAnnouncements();
    membership.imr_ifindex = static_cast<int>(if_nametoindex(interface.c_str()));
    constexpr int thisHostOnly = 0;
    constexpr int yes = 1;
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    return membership.imr_ifindex != 0 && bind(socket.number(), general(address), size) == 0 &&
           getsockname(socket.number(), general(address), &size) == 0 &&
           socket.set(IP_ADD_MEMBERSHIP, membership) && socket.set(IP_MULTICAST_IF, membership) &&
           socket.set(IP_MULTICAST_TTL, thisHostOnly) && socket.set(IP_MULTICAST_LOOP, yes);
}

std::optional<std::uint64_t> setting(const std::string& name)
{
    std::ifstream file("/proc/sys/net/core/" + name);
    std::uint64_t value = 0;
    return file >> value ? std::optional(value) : std::nullopt;
}

/// The words of the next line that begins with one.
std::vector<std::string> lineOf(std::istream& file, const std::string& first)
{
    for (std::string line; std::getline(file, line);) {
        std::istringstream stream(line);
        std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
        if (!words.empty() && words.front() == first) {
            return words;
        }
    }
    return {};
}

} // namespace

bool hearsItsMulticast(const std::string& interface)
{
    constexpr int patience = 300; // milliseconds
    constexpr std::string_view sent = "plex doctor";
    const Socket socket;
    sockaddr_in address{};
    if (socket.number() < 0 || !join(socket, interface, address)) {
        return false;
    }
    address.sin_addr = groupOfAnnouncements();
    if (sendto(socket.number(), sent.data(), sent.size(), 0, general(address), sizeof address) < 0) {
        return false;
    }
    pollfd arrival{socket.number(), POLLIN, 0};
    std::array<char, sent.size()> received{};
    return poll(&arrival, 1, patience) > 0 &&
           recv(socket.number(), received.data(), received.size(), 0) == static_cast<ssize_t>(sent.size()) &&
           std::ranges::equal(received, sent);
}

SocketBuffers socketBuffers()
{
    return {setting("rmem_max"), setting("rmem_default"), setting("wmem_max"), setting("wmem_default")};
}

std::optional<std::uint64_t> droppedPackets(const std::string& table)
{
    std::ifstream file(table);
    const auto names = lineOf(file, "Udp:"); // the first of two such lines
    const auto values = lineOf(file, "Udp:");
    const auto place = std::ranges::find(names, "RcvbufErrors") - names.begin();
    if (place >= static_cast<std::ptrdiff_t>(std::min(names.size(), values.size()))) {
        return std::nullopt;
    }
    const std::string& digits = values.at(static_cast<std::size_t>(place));
    std::uint64_t count = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), count);
    return count;
}

} // namespace ovra::plex::tool
