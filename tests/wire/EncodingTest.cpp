// SPDX-License-Identifier: Apache-2.0
#include "TopicTypes.hpp"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace plex::test
{

namespace
{

constexpr std::uint32_t lengthBefore = 77;

/// A payload with guard bytes behind its memory; without any, an address sanitizer stands guard there.
class GuardedPayload
{
public:
    GuardedPayload(std::uint32_t size, std::uint32_t guards) : total_(size + guards)
    {
        payload_.data = static_cast<unsigned char*>(std::malloc(total_));
        payload_.max_size = size;
        payload_.length = lengthBefore;
        std::memset(payload_.data, guard, total_);
    }

    SerializedPayload_t* get() { return &payload_; }

    std::uint32_t length() const { return payload_.length; }

    bool untouchedFrom(std::uint32_t offset) const
    {
        return std::all_of(payload_.data + offset, payload_.data + total_,
                           [](unsigned char byte) { return byte == guard; });
    }

private:
    static constexpr unsigned char guard = 0xA5;

    std::size_t total_;
    SerializedPayload_t payload_;
};

struct Representation {
    DataRepresentationId id;
    std::uint32_t altAzLength;
    std::uint32_t domeTemperatureLength;
};

constexpr std::array<Representation, 4> representations{
    {{XCDR, 20, 12},
     {XCDR2, 24, 16},
     {eprosima::fastdds::dds::XML_DATA_REPRESENTATION, 24, 16},
     {static_cast<DataRepresentationId>(99), 24, 16}}};

} // namespace

class EncodedSample : public EveryTopicType
{
protected:
    std::uint32_t lengthIn(const Representation& representation) const
    {
        return type().members == 2 ? representation.altAzLength : representation.domeTemperatureLength;
    }

    const Sample sample{type(), firstMembers(type(), {0x3FF0123456789ABC, 0xC0FEDCBA98765432})};
};

INSTANTIATE_TEST_SUITE_P(, EncodedSample, everyTopicType(), nameOf);

TEST_P(EncodedSample, HasItsEncodingsLength)
{
    for (const auto& representation : representations) {
        GuardedPayload payload(lengthIn(representation) + 50, 0);
        EXPECT_TRUE(type().data->serialize(sample.get(), payload.get(), representation.id));
        EXPECT_EQ(payload.length(), lengthIn(representation));
        EXPECT_TRUE(payload.untouchedFrom(lengthIn(representation)));
    }
}

TEST_P(EncodedSample, FitsABufferOfExactlyItsLength)
{
    for (const auto& representation : representations) {
        GuardedPayload payload(lengthIn(representation), 0);
        EXPECT_TRUE(type().data->serialize(sample.get(), payload.get(), representation.id));
        EXPECT_EQ(payload.length(), lengthIn(representation));
    }
}

TEST_P(EncodedSample, FitsTheTypesMaximumSize)
{
    for (const auto& representation : representations) {
        EXPECT_LE(lengthIn(representation), type().data->m_typeSize);
    }
}

TEST_P(EncodedSample, IsRefusedByEverySmallerBufferAndWritesNothingBeyondIt)
{
    for (const auto& representation : representations) {
        for (std::uint32_t size = 0; size < lengthIn(representation); ++size) {
            SCOPED_TRACE(size);
            GuardedPayload exact(size, 0);
            EXPECT_FALSE(type().data->serialize(sample.get(), exact.get(), representation.id));
            EXPECT_EQ(exact.length(), lengthBefore);

            GuardedPayload guarded(size, 32);
            EXPECT_FALSE(type().data->serialize(sample.get(), guarded.get(), representation.id));
            EXPECT_TRUE(guarded.untouchedFrom(size));
        }
    }
}

TEST_P(EncodedSample, IsInVersion1WhereNoRepresentationIsNamed)
{
    GuardedPayload payload(100, 0);
    EXPECT_TRUE(type().data->serialize(sample.get(), payload.get()));
    const auto* const written = payload.get()->data;
    EXPECT_EQ(Bytes(written, written + payload.length()), encoded(type(), sample.bits(), XCDR));
}

TEST_P(EncodedSample, MarksThePayloadWithTheNativeByteOrder)
{
    for (const auto& representation : representations) {
        GuardedPayload payload(100, 0);
        payload.get()->encapsulation = 0x7777;
        EXPECT_TRUE(type().data->serialize(sample.get(), payload.get(), representation.id));
        EXPECT_EQ(payload.get()->encapsulation, std::endian::native == std::endian::big ? CDR_BE : CDR_LE);
    }
}

TEST_P(EncodedSample, IsAsLongAsTheSizeProviderSays)
{
    for (const auto& representation : representations) {
        EXPECT_EQ(type().data->getSerializedSizeProvider(sample.get(), representation.id)(),
                  lengthIn(representation));
    }
    EXPECT_EQ(type().data->getSerializedSizeProvider(sample.get())(), lengthIn(representations[0]));
}

TEST_P(EncodedSample, OfDefaultValuesIsAllZeroBehindTheHeader)
{
    const auto payload = encoded(type(), Bits(type().members), XCDR);
    EXPECT_TRUE(std::all_of(payload.begin() + 4, payload.end(), [](auto byte) { return byte == 0; }));
}

TEST_P(EncodedSample, KeepsEveryBitOfSpecialNumbers)
{
    using Limits = std::numeric_limits<double>;
    const Bits special{0x7FF8000000000000,
                       0x7FF8DEADBEEFCAFE,
                       0xFFF8000000000001,
                       0x7FF0000000000001, // a signalling NaN
                       std::bit_cast<std::uint64_t>(Limits::infinity()),
                       std::bit_cast<std::uint64_t>(-Limits::infinity()),
                       std::bit_cast<std::uint64_t>(-0.0),
                       std::bit_cast<std::uint64_t>(Limits::denorm_min()),
                       std::bit_cast<std::uint64_t>(-Limits::denorm_min()),
                       0x000FFFFFFFFFFFFF, // the largest denormal
                       std::bit_cast<std::uint64_t>(Limits::max()),
                       std::bit_cast<std::uint64_t>(Limits::lowest())};
    for (const auto pattern : special) {
        SCOPED_TRACE(pattern);
        const Bits members = firstMembers(type(), {pattern, ~pattern});
        EXPECT_EQ(decoded(type(), encoded(type(), members, XCDR)), members);
        EXPECT_EQ(decoded(type(), encoded(type(), members, XCDR2)), members);
        for (const auto& encoding : encodings) {
            EXPECT_EQ(decoded(type(), payloadOf(encoding, members)), members) << encoding;
        }
    }
}

} // namespace plex::test
