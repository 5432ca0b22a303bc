// SPDX-License-Identifier: Apache-2.0
#include "TopicTypes.hpp"

#include <fastcdr/FastBuffer.h>

namespace plex::test
{

namespace
{

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::CdrVersion;
using eprosima::fastcdr::EncodingAlgorithmFlag;

struct Golden {
    std::uint16_t id;
    TopicType type;
    Bits members;
    const char* hex;
};

const Bits altAzMembers{0x3FF0123456789ABC, 0xC0FEDCBA98765432};
const Bits temperature{0x4037A1B2C3D4E5F6};

const std::vector<Golden>& goldenPayloads()
{
    static const std::vector<Golden> payloads{
        {0x0000, altAz(), altAzMembers, "00000000 3FF0123456789ABC C0FEDCBA98765432"},
        {0x0001, altAz(), altAzMembers, "00010000 BC9A78563412F03F 32547698BADCFEC0"},
        {0x0006, altAz(), altAzMembers, "00060000 3FF0123456789ABC C0FEDCBA98765432"},
        {0x0007, altAz(), altAzMembers, "00070000 BC9A78563412F03F 32547698BADCFEC0"},
        {0x0008, altAz(), altAzMembers, "00080000 00000010 3FF0123456789ABC C0FEDCBA98765432"},
        {0x0009, altAz(), altAzMembers, "00090000 10000000 BC9A78563412F03F 32547698BADCFEC0"},
        {0x0000, domeTemperature(), temperature, "00000000 4037A1B2C3D4E5F6"},
        {0x0001, domeTemperature(), temperature, "00010000 F6E5D4C3B2A13740"},
        {0x0006, domeTemperature(), temperature, "00060000 4037A1B2C3D4E5F6"},
        {0x0007, domeTemperature(), temperature, "00070000 F6E5D4C3B2A13740"},
        {0x0008, domeTemperature(), temperature, "00080000 00000008 4037A1B2C3D4E5F6"},
        {0x0009, domeTemperature(), temperature, "00090000 08000000 F6E5D4C3B2A13740"}};
    return payloads;
}

const Golden& golden(const TopicType& type, std::uint16_t id)
{
    return *std::find_if(goldenPayloads().begin(), goldenPayloads().end(), [&](const Golden& candidate) {
        return candidate.id == id && std::string_view(candidate.type.name) == type.name;
    });
}

/// The identifier's form for this machine's byte order.
constexpr std::uint16_t native(std::uint16_t bigEndianId)
{
    return std::endian::native == std::endian::little ? bigEndianId + 1 : bigEndianId;
}

/// What a stream of a byte order writes, encapsulation header included.
Bytes streamed(const TopicType& type, const Bits& members, Cdr::Endianness order, CdrVersion version)
{
    Bytes memory(100);
    eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(memory.data()), memory.size());
    Cdr cdr(buffer, order, version);
    cdr.set_encoding_flag(version == CdrVersion::XCDRv2 ? EncodingAlgorithmFlag::DELIMIT_CDR2
                                                        : EncodingAlgorithmFlag::PLAIN_CDR);
    cdr.serialize_encapsulation();
    type.write(cdr, Sample(type, members).get());
    return firstBytes(memory, cdr.get_serialized_data_length());
}

} // namespace

class GoldenBytes : public EveryTopicType
{
};

INSTANTIATE_TEST_SUITE_P(, GoldenBytes, everyTopicType(), nameOf);

TEST_P(GoldenBytes, AreWrittenByTheTopicDataTypeInNativeByteOrder)
{
    const auto& version1 = golden(type(), native(0x0000));
    EXPECT_EQ(encoded(type(), version1.members, XCDR), bytes(version1.hex));
    const auto& version2 = golden(type(), native(0x0008));
    EXPECT_EQ(encoded(type(), version2.members, XCDR2), bytes(version2.hex));
}

TEST_P(GoldenBytes, AreWrittenByStreamsOfEitherByteOrder)
{
    for (const auto order : {Cdr::BIG_ENDIANNESS, Cdr::LITTLE_ENDIANNESS}) {
        const auto id = [order](int bigEndianId) {
            return static_cast<std::uint16_t>(bigEndianId + (order == Cdr::LITTLE_ENDIANNESS ? 1 : 0));
        };
        const auto& version1 = golden(type(), id(0x0000));
        EXPECT_EQ(streamed(type(), version1.members, order, CdrVersion::XCDRv1), bytes(version1.hex));
        const auto& version2 = golden(type(), id(0x0008));
        EXPECT_EQ(streamed(type(), version2.members, order, CdrVersion::XCDRv2), bytes(version2.hex));
    }
}

TEST_P(GoldenBytes, AreReadBackInEveryEncoding)
{
    for (const auto& encoding : encodings) {
        SCOPED_TRACE(encoding);
        const auto& payload = golden(type(), encoding.id);
        EXPECT_EQ(decoded(type(), bytes(payload.hex)), payload.members);
    }
}

TEST_P(GoldenBytes, AreLaidOutAsByThePayloadsOfTheOtherTests)
{
    for (const auto& encoding : encodings) {
        SCOPED_TRACE(encoding);
        const auto& payload = golden(type(), encoding.id);
        EXPECT_EQ(payloadOf(encoding, payload.members), bytes(payload.hex));
    }
}

} // namespace plex::test
