// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace plex::test
{

/// A DDS domain that no other running test has: participants that come and go in a domain cost memory and
/// time of those that are there. What reserves it is a name of a socket, which the kernel frees whatever way
/// the process ends.
class ReservedDomain
{
public:
    /// @throws std::runtime_error if none is free.
    ReservedDomain()
    {
        const auto first = static_cast<unsigned>(getpid());
        for (unsigned tried = 0; tried < count; ++tried) {
            number_ = 1 + (first + tried) % count;
            if (reserve()) {
                return;
            }
        }
        close(socket_);
        throw std::runtime_error("no DDS domain is left for this test");
    }

    ReservedDomain(const ReservedDomain&) = delete;
    ReservedDomain& operator=(const ReservedDomain&) = delete;

    ~ReservedDomain() { close(socket_); }

    unsigned number() const { return number_; }

private:
    /// The ports of higher domains are also handed out by the kernel for outgoing traffic.
    static constexpr unsigned count = 95;

    bool reserve() const
    {
        const auto name = "plex-test-domain-" + std::to_string(number_);
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        std::memcpy(&address.sun_path[1], name.data(), name.size()); // behind a NUL: there is no file of it
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
        return bind(socket_, reinterpret_cast<const sockaddr*>(&address), size) == 0;
    }

    const int socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    unsigned number_ = 0;
};

} // namespace plex::test
