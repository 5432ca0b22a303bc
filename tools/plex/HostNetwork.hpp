// SPDX-License-Identifier: Apache-2.0
// What the network of this host does with the packets of DDS.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ovra::plex::tool
{

/// Whether multicast that is sent by an interface comes back to this host, as announcements do. Nothing
/// leaves the host for it. @returns false as well where the system refuses; it takes 0.3 s then.
bool hearsItsMulticast(const std::string& interface);

/// The kernel's limits of the buffers of sockets, in bytes; nothing where it does not tell.
struct SocketBuffers {
    std::optional<std::uint64_t> receiveMost;
    std::optional<std::uint64_t> receiveDefault;
    std::optional<std::uint64_t> sendMost;
    std::optional<std::uint64_t> sendDefault;
};

SocketBuffers socketBuffers();

/// Packets of UDP that the kernel has dropped since the host started, for want of room in the buffers of
/// sockets.
/// @param table what it counts. @returns nothing: it does not tell.
std::optional<std::uint64_t> droppedPackets(const std::string& table = "/proc/net/snmp");

} // namespace ovra::plex::tool
