// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// docs/wire-format.md once more, as a decoder and an encoder that share nothing with those under test.
namespace plex::fuzz
{

using Bytes = std::vector<std::uint8_t>;

enum class Kind : std::uint8_t { Int32, Float64, Text };

/// A member as bits or as text, so that NaNs and signs of zero count.
struct Member {
    Kind kind;
    std::uint64_t bits = 0;
    std::string text;

    friend bool operator==(const Member&, const Member&) = default;
};

inline Member member(std::int32_t number)
{
    return {Kind::Int32, std::bit_cast<std::uint32_t>(number), {}};
}

inline Member member(double number)
{
    return {Kind::Float64, std::bit_cast<std::uint64_t>(number), {}};
}

inline Member member(const std::string& text)
{
    return {Kind::Text, 0, text};
}

using Members = std::vector<Member>;

constexpr std::size_t encapsulationBytes = 4;

/// How a payload's first two bytes say that it is encoded.
struct Encoding {
    std::endian order;
    bool version2;
    bool delimited;

    static std::optional<Encoding> of(std::span<const std::uint8_t> payload)
    {
        if (payload.size() < encapsulationBytes || payload[0] != 0) {
            return std::nullopt;
        }
        const unsigned id = payload[1];
        if (id != 0 && id != 1 && (id < 6 || id > 9)) {
            return std::nullopt;
        }
        return Encoding{id % 2 == 0 ? std::endian::big : std::endian::little, id >= 6, id >= 8};
    }

    std::size_t alignmentOf(std::size_t size) const { return std::min<std::size_t>(size, version2 ? 4 : 8); }
};

/// Reads what stands behind an encapsulation header; offsets count from there.
class OracleReader
{
public:
    OracleReader(std::span<const std::uint8_t> body, const Encoding& encoding)
        : body_(body)
        , encoding_(encoding)
    {
    }

    bool atEnd() const { return position_ == body_.size(); }

    std::size_t position() const { return position_; }

    std::size_t end() const { return body_.size(); }

    /// Lets the body end so many bytes further on. @returns whether it reaches that far.
    bool endAfter(std::uint64_t bytes)
    {
        if (bytes > body_.size() - position_) {
            return false;
        }
        body_ = body_.first(position_ + static_cast<std::size_t>(bytes));
        return true;
    }

    template <class Number>
    std::optional<Number> next()
    {
        const std::size_t alignment = encoding_.alignmentOf(sizeof(Number));
        const std::size_t start = (position_ + alignment - 1) / alignment * alignment;
        if (start > body_.size() || body_.size() - start < sizeof(Number)) {
            return std::nullopt;
        }
        std::array<std::uint8_t, sizeof(Number)> raw{};
        std::copy_n(body_.begin() + static_cast<std::ptrdiff_t>(start), raw.size(), raw.begin());
        if (encoding_.order != std::endian::native) {
            std::reverse(raw.begin(), raw.end());
        }
        position_ = start + sizeof(Number);
        return std::bit_cast<Number>(raw);
    }

    /// Its length stands before it and counts the NUL that ends it; some leave that out of empty ones.
    std::optional<std::string> nextText()
    {
        const auto length = next<std::uint32_t>();
        if (!length || *length > body_.size() - position_) {
            return std::nullopt;
        }
        const auto first = body_.begin() + static_cast<std::ptrdiff_t>(position_);
        std::string text(first, first + static_cast<std::ptrdiff_t>(*length));
        position_ += *length;
        if (text.empty()) {
            return text;
        }
        if (text.back() != '\0') {
            return std::nullopt;
        }
        text.pop_back();
        return text;
    }

    bool read(Member& member)
    {
        std::optional<std::uint64_t> bits = 0;
        switch (member.kind) {
        case Kind::Int32:
            bits = next<std::uint32_t>();
            break;
        case Kind::Float64:
            bits = next<std::uint64_t>();
            break;
        case Kind::Text: {
            const auto text = nextText();
            member.text = text.value_or("");
            return text.has_value();
        }
        }
        member.bits = bits.value_or(0);
        return bits.has_value();
    }

private:
    std::span<const std::uint8_t> body_;
    Encoding encoding_;
    std::size_t position_ = 0;
};

/// The members that a payload means, or nothing where it is to be refused.
/// @param defaults the type's members; those that a delimited payload lacks stay as they are.
/// @param mayGoOn whether anything may follow the value in version 2, too, not just up to 3 bytes.
inline std::optional<Members> decode(std::span<const std::uint8_t> payload, Members defaults, bool mayGoOn)
{
    const auto encoding = Encoding::of(payload);
    if (!encoding) {
        return std::nullopt;
    }
    OracleReader reader(payload.subspan(encapsulationBytes), *encoding);
    if (encoding->delimited) {
        const auto length = reader.next<std::uint32_t>();
        if (!length || !reader.endAfter(*length)) {
            return std::nullopt;
        }
    }
    for (auto& member : defaults) {
        if (encoding->delimited && reader.atEnd()) {
            break;
        }
        if (!reader.read(member)) {
            return std::nullopt;
        }
    }
    const std::size_t end = encapsulationBytes + (encoding->delimited ? reader.end() : reader.position());
    if (encoding->version2 && !mayGoOn && payload.size() - end > 3) {
        return std::nullopt;
    }
    return defaults;
}

/// Writes what stands behind an encapsulation header, in native byte order.
class OracleWriter
{
public:
    explicit OracleWriter(const Encoding& encoding) : encoding_(encoding) {}

    void write(const Member& member)
    {
        switch (member.kind) {
        case Kind::Int32:
            append(static_cast<std::uint32_t>(member.bits));
            break;
        case Kind::Float64:
            append(member.bits);
            break;
        case Kind::Text:
            append(static_cast<std::uint32_t>(member.text.size() + 1));
            body_.insert(body_.end(), member.text.begin(), member.text.end());
            body_.push_back(0);
            break;
        }
    }

    template <class Number>
    void append(Number number)
    {
        const std::size_t alignment = encoding_.alignmentOf(sizeof number);
        body_.resize((body_.size() + alignment - 1) / alignment * alignment);
        const auto raw = std::bit_cast<std::array<std::uint8_t, sizeof number>>(number);
        body_.insert(body_.end(), raw.begin(), raw.end());
    }

    const Bytes& body() const { return body_; }

private:
    Encoding encoding_;
    Bytes body_;
};

/// The payload that members are to be written as: plain CDR in version 1, delimited CDR2 in version 2.
inline Bytes encode(const Members& members, bool version2)
{
    OracleWriter writer({std::endian::native, version2, version2});
    if (version2) {
        writer.append(std::uint32_t{0});
    }
    for (const auto& member : members) {
        writer.write(member);
    }
    const Bytes& body = writer.body();
    const bool little = std::endian::native == std::endian::little;
    Bytes payload{0, static_cast<std::uint8_t>((version2 ? 8 : 0) + (little ? 1 : 0)), 0, 0};
    payload.insert(payload.end(), body.begin(), body.end());
    if (version2) {
        const auto length = static_cast<std::uint32_t>(body.size() - sizeof(std::uint32_t));
        std::memcpy(&payload[encapsulationBytes], &length, sizeof length);
    }
    return payload;
}

} // namespace plex::fuzz
