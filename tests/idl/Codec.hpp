// SPDX-License-Identifier: Apache-2.0
// A small vocabulary for tests of payloads. The type under test is called T.
#pragma once

#include "Idl.hpp"

#include <plex/idl/Codec.hpp>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace plex::test
{

using Payload = std::vector<std::uint8_t>;

/// The bytes of groups of hexadecimal digits, each of which is one number, the most significant byte first. A
/// payload of the other order has the bytes of each group turned round.
inline Payload bytesOf(const std::string& groups, std::endian order = std::endian::big)
{
    Payload bytes;
    std::istringstream in(groups);
    for (std::string group; in >> group;) {
        Payload number;
        for (std::size_t i = 0; i < group.size(); i += 2) {
            number.push_back(static_cast<std::uint8_t>(std::stoul(group.substr(i, 2), nullptr, 16)));
        }
        if (order == std::endian::little) {
            std::ranges::reverse(number);
        }
        bytes.insert(bytes.end(), number.begin(), number.end());
    }
    return bytes;
}

/// A payload: the header of an encoding, whose big-endian form has the identifier, and what follows it.
inline Payload payloadOf(std::uint8_t identifier, const std::string& groups,
                         std::endian order = std::endian::big)
{
    Payload payload{0, static_cast<std::uint8_t>(identifier + (order == std::endian::little ? 1 : 0)), 0, 0};
    const Payload body = bytesOf(groups, order);
    payload.insert(payload.end(), body.begin(), body.end());
    return payload;
}

inline std::string hexOf(const Payload& payload)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < payload.size(); ++i) {
        text += i % 4 == 0 && i > 0 ? " " : "";
        text += digits[payload[i] >> 4U];
        text += digits[payload[i] & 15U];
    }
    return text;
}

inline const NamedType& typeT(const Model& model)
{
    return *model.findType("T");
}

/// The JSON of a payload.
inline std::string jsonOf(const Model& model, const Payload& payload, const CodecOptions& options = {})
{
    const Type& type = typeT(model);
    return toJson(type, decode(type, payload, options));
}

inline std::string jsonOf(const std::string& idl, const Payload& payload, const CodecOptions& options = {})
{
    return jsonOf(modelOf(idl), payload, options);
}

/// The payload of a JSON text.
inline Payload payloadFrom(const Model& model, const std::string& json, const Encoding& encoding,
                           const CodecOptions& options = {})
{
    const Type& type = typeT(model);
    return encode(type, fromJson(type, json, options), encoding, options);
}

/// What is wrong; empty where nothing is.
template <class Work>
std::string faultIn(const Work& work)
{
    try {
        work();
    } catch (const CodecError& error) {
        return error.what();
    }
    return {};
}

} // namespace plex::test
