// SPDX-License-Identifier: Apache-2.0
#include "TopicTypes.hpp"

#include <cstring>
#include <random>

namespace plex::test
{

namespace
{

/// Reads numbers of a payload in its byte order.
class Reader
{
public:
    Reader(const Bytes& payload, std::size_t position, std::endian order)
        : payload_(payload)
        , position_(position)
        , order_(order)
    {
    }

    std::size_t left() const { return payload_.size() - position_; }

    template <class Number>
    std::optional<Number> next()
    {
        if (left() < sizeof(Number)) {
            return std::nullopt;
        }
        std::array<std::uint8_t, sizeof(Number)> raw{};
        std::memcpy(raw.data(), &payload_[position_], raw.size());
        position_ += raw.size();
        if (order_ != std::endian::native) {
            std::reverse(raw.begin(), raw.end());
        }
        return std::bit_cast<Number>(raw);
    }

private:
    const Bytes& payload_;
    std::size_t position_;
    std::endian order_;
};

/// What a payload means by the rules of its encoding, worked out without a CDR library.
std::optional<Bits> expectedMembers(const Bytes& payload, std::size_t count)
{
    if (payload.size() < 4) {
        return std::nullopt;
    }
    const int id = payload[0] * 256 + payload[1];
    const auto encoding = std::find_if(encodings.begin(), encodings.end(),
                                       [id](const Encoding& known) { return known.id == id; });
    if (encoding == encodings.end()) {
        return std::nullopt;
    }
    Reader reader(payload, 4, encoding->order);
    std::size_t length = count * sizeof(double);
    if (encoding->delimited) {
        const auto delimiter = reader.next<std::uint32_t>();
        if (!delimiter) {
            return std::nullopt;
        }
        length = *delimiter;
    }
    const std::size_t known = std::min(length, count * sizeof(double));
    if (length > reader.left() || known % sizeof(double) != 0) {
        return std::nullopt;
    }
    Bits members(count);
    for (std::size_t i = 0; i < known / sizeof(double); ++i) {
        const auto member = reader.next<std::uint64_t>();
        if (!member) {
            return std::nullopt;
        }
        members[i] = *member;
    }
    return members;
}

/// Random bytes whose header and delimiter are plausible most of the time.
class Cook
{
public:
    Bytes soup()
    {
        Bytes payload(upTo(48));
        for (auto& byte : payload) {
            byte = static_cast<std::uint8_t>(upTo(255));
        }
        if (payload.size() >= 8 && upTo(9) != 0) {
            payload[0] = 0;
            payload[1] = static_cast<std::uint8_t>(upTo(15));
            Bytes delimiter;
            append(delimiter, upTo(40), payload[1] % 2 == 0 ? std::endian::big : std::endian::little);
            std::copy(delimiter.begin(), delimiter.end(), payload.begin() + 4);
        }
        return payload;
    }

private:
    std::uint32_t upTo(std::uint32_t most) { return static_cast<std::uint32_t>(random_() % (most + 1)); }

    std::mt19937 random_{20240229}; // the same soup in every run
};

} // namespace

class ByteSoup : public EveryTopicType
{
};

INSTANTIATE_TEST_SUITE_P(, ByteSoup, everyTopicType(), nameOf);

TEST_P(ByteSoup, IsReadAsTheRulesSayOrRefused)
{
    Cook cook;
    int accepted = 0;
    for (int i = 0; i < 100'000; ++i) {
        const auto payload = cook.soup();
        const auto expected = expectedMembers(payload, type().members);
        accepted += expected ? 1 : 0;
        ASSERT_EQ(decoded(type(), payload), expected) << testing::PrintToString(payload);
    }
    EXPECT_GT(accepted, 5'000) << "the soup is too thin to show anything";
}

} // namespace plex::test
