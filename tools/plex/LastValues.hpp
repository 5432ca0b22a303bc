// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// The last values of a topic, one a line. Belongs to one thread.
///
/// Only what is looked at is put into words, and that once: values may come faster than that takes. What is
/// kept has a bound: so many values, of which each is a line of limited length or its payload, and of these
/// so many bytes altogether, or the latest one alone where that is larger.
class LastValues
{
public:
    static constexpr std::size_t mostValues = 100;
    static constexpr std::size_t mostPayloadBytes = 4'000'000;
    static constexpr std::size_t longestLine = 1000; ///< bytes

    using Payload = std::vector<std::uint8_t>;

    /// @param inWords has what is to be shown of a payload.
    explicit LastValues(std::function<std::string(const Payload&)> inWords);

    void add(const Payload& payload);

    /// One line each, the latest at the end.
    std::vector<std::string> lines();

    /// How many bytes of lines and payloads are kept.
    std::size_t bytes() const;

private:
    struct Value {
        std::optional<Payload> payload; ///< nothing: it is in words
        std::string line;
    };

    static std::size_t sizeOf(const Value& value); ///< of its payload
    void remove(const std::deque<Value>::iterator& value);

    const std::function<std::string(const Payload&)> inWords_;
    std::deque<Value> values_;
    std::size_t payloadBytes_ = 0;
};

} // namespace ovra::plex::tool
