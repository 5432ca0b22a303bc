// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Profiles.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace plex::bench
{

/// The 16 bytes that every stack carries.
struct Horizontal {
    double alt = 0.0;
    double az = 0.0;
};

/// Where and how two processes meet.
struct StackSettings {
    unsigned domain = 1;
    std::string profileFile; ///< has the QoS profiles
    Profiles profiles;
    bool isReliable = false; ///< whether samples must not be lost, as the profiles have it
    std::string socketPath;  ///< beginning of the names of local sockets
};

/// Sends on one topic.
class Sender
{
public:
    Sender() = default;
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;
    virtual ~Sender() = default;

    /// @returns whether the value was accepted.
    virtual bool send(const Horizontal& value) = 0;
};

/// Hands on each value that arrives on one topic, on a thread of the stack, while it lives.
class Receiver
{
public:
    using Handler = std::function<void(const Horizontal&)>;

    Receiver() = default;
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;
    virtual ~Receiver() = default;
};

/// A way to get values from one process to another.
class Stack
{
public:
    Stack() = default;
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;
    virtual ~Stack() = default;

    virtual std::unique_ptr<Sender> sender(const std::string& topic) = 0;
    virtual std::unique_ptr<Receiver> receiver(const std::string& topic, Receiver::Handler handler) = 0;
};

std::unique_ptr<Stack> makeBindingStack(const StackSettings& settings);

/// As the one above, but callbacks run on a thread of the participant's own.
std::unique_ptr<Stack> makeBindingStackWithOwnThread(const StackSettings& settings);

std::unique_ptr<Stack> makeBareStack(const StackSettings& settings);
std::unique_ptr<Stack> makeCycloneStack(const StackSettings& settings);
std::unique_ptr<Stack> makeZeroMqStack(const StackSettings& settings);

} // namespace plex::bench
