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

/// The members of the longest version of a type that these tests know.
const Bits manyMembers{0x3FF0123456789ABC, 0xC0FEDCBA98765432, 0x4037A1B2C3D4E5F6, 0x8000000000000001};

constexpr std::uint32_t memberBytes = 8;
constexpr std::size_t headerBytes = 8; ///< encapsulation and delimiter header

/// A value of a mutable type, which lists its members with their identifiers.
Bytes parameterList(EncodingAlgorithmFlag encoding, const Bits& members)
{
    Bytes memory(100);
    eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(memory.data()), memory.size());
    const bool version2 = encoding == EncodingAlgorithmFlag::PL_CDR2;
    Cdr cdr(buffer, Cdr::DEFAULT_ENDIAN, version2 ? CdrVersion::XCDRv2 : CdrVersion::XCDRv1);
    cdr.set_encoding_flag(encoding);
    cdr.serialize_encapsulation();
    Cdr::state state(cdr);
    cdr.begin_serialize_type(state, encoding);
    std::uint32_t id = 0;
    for (const auto member : members) {
        cdr << eprosima::fastcdr::MemberId(id++) << member;
    }
    cdr.end_serialize_type(state);
    return firstBytes(memory, cdr.get_serialized_data_length());
}

/// The members of a value of which only the first ones were sent.
Bits valuesOf(const TopicType& type, std::size_t sent)
{
    Bits members = firstMembers(type, manyMembers);
    std::fill(members.begin() + static_cast<std::ptrdiff_t>(std::min(sent, members.size())), members.end(),
              0);
    return members;
}

} // namespace

class Decoding : public EveryTopicType
{
protected:
    Bits members() const { return firstMembers(type(), manyMembers); }

    /// Runs a check for the delimited encodings of both byte orders.
    template <class Check>
    void forDelimitedEncodings(Check check) const
    {
        for (const auto& encoding : encodings) {
            if (encoding.delimited) {
                SCOPED_TRACE(encoding);
                check(encoding);
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(, Decoding, everyTopicType(), nameOf);

TEST_P(Decoding, TruncatedPayloadIsRefusedAtEveryByte)
{
    for (const auto& encoding : encodings) {
        const auto whole = payloadOf(encoding, members());
        for (std::size_t size = 0; size < whole.size(); ++size) {
            EXPECT_EQ(decoded(type(), firstBytes(whole, size)), std::nullopt) << encoding << " at " << size;
        }
        EXPECT_EQ(decoded(type(), whole), members()) << encoding;
    }
}

TEST_P(Decoding, BytesBehindTheValueAreIgnored)
{
    for (const auto& encoding : encodings) {
        auto payload = payloadOf(encoding, members());
        for (int extra = 0; extra < 12; ++extra) {
            payload.push_back(0xEE);
            EXPECT_EQ(decoded(type(), payload), members()) << encoding;
        }
    }
}

TEST_P(Decoding, OptionsOfTheHeaderAreIgnored)
{
    for (const auto& encoding : encodings) {
        auto payload = payloadOf(encoding, members());
        payload[2] = 0xFF;
        payload[3] = 0xFF;
        EXPECT_EQ(decoded(type(), payload), members()) << encoding;
    }
}

TEST_P(Decoding, PlainVersion2HasNoDelimiter)
{
    for (const auto& encoding : encodings) {
        if (encoding.id == 0x0006 || encoding.id == 0x0007) {
            const auto payload = payloadOf(encoding, members());
            EXPECT_EQ(payload.size(), 4 + memberBytes * type().members);
            EXPECT_EQ(decoded(type(), payload), members()) << encoding;
        }
    }
}

TEST_P(Decoding, LongerVersionOfTheTypeGivesItsKnownMembers)
{
    forDelimitedEncodings([&](const Encoding& encoding) {
        EXPECT_EQ(decoded(type(), payloadOf(encoding, manyMembers)), members());
    });
}

TEST_P(Decoding, TailOfUnknownMembersMayHaveAnyLength)
{
    const auto known = static_cast<std::uint32_t>(memberBytes * type().members);
    forDelimitedEncodings([&](const Encoding& encoding) {
        for (std::uint32_t tail = 0; tail < 40; ++tail) {
            auto payload = payloadOf(encoding, members(), known + tail);
            payload.insert(payload.end(), tail, 0xEE);
            EXPECT_EQ(decoded(type(), payload), members()) << tail;
        }
    });
}

TEST_P(Decoding, TruncatedLongerVersionIsRefusedAtEveryByte)
{
    forDelimitedEncodings([&](const Encoding& encoding) {
        const auto whole = payloadOf(encoding, manyMembers);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            EXPECT_EQ(decoded(type(), firstBytes(whole, size)), std::nullopt) << size;
        }
    });
}

TEST_P(Decoding, MembersThatAnOlderVersionLacksGetTheirDefaults)
{
    forDelimitedEncodings([&](const Encoding& encoding) {
        for (std::size_t sent = 0; sent <= type().members; ++sent) {
            const Bits older(manyMembers.begin(), manyMembers.begin() + static_cast<std::ptrdiff_t>(sent));
            EXPECT_EQ(decoded(type(), payloadOf(encoding, older)), valuesOf(type(), sent)) << sent;
        }
    });
}

TEST_P(Decoding, BytesBehindAnOlderVersionAreNotTakenForItsMissingMembers)
{
    forDelimitedEncodings([&](const Encoding& encoding) {
        const auto payload = payloadOf(encoding, manyMembers, 0);
        EXPECT_EQ(decoded(type(), payload), Bits(type().members));
    });
}

TEST_P(Decoding, DelimiterThatCutsAMemberIsRefused)
{
    forDelimitedEncodings([&](const Encoding& encoding) {
        for (std::uint32_t length = 0; length < memberBytes * type().members; ++length) {
            const auto payload = payloadOf(encoding, manyMembers, length);
            const auto wanted = length % memberBytes == 0
                                    ? std::optional(valuesOf(type(), length / memberBytes))
                                    : std::nullopt;
            EXPECT_EQ(decoded(type(), payload), wanted) << length;
        }
    });
}

TEST_P(Decoding, DelimiterBeyondTheBufferIsRefused)
{
    const auto body = static_cast<std::uint32_t>(memberBytes * type().members);
    forDelimitedEncodings([&](const Encoding& encoding) {
        for (const std::uint32_t length : {body + 1, body + 4, body + 8, 0x7FFFFFFFU, 0x80000000U,
                                           0xFFFFFFF0U, 0xFFFFFFF8U, 0xFFFFFFFCU, 0xFFFFFFFFU}) {
            EXPECT_EQ(decoded(type(), payloadOf(encoding, members(), length)), std::nullopt) << length;
        }
    });
}

TEST_P(Decoding, DelimitedValueNeedsItsWholeDelimiter)
{
    forDelimitedEncodings([&](const Encoding& encoding) {
        const auto payload = payloadOf(encoding, {}, 0);
        EXPECT_EQ(payload.size(), headerBytes);
        EXPECT_EQ(decoded(type(), payload), Bits(type().members));
        EXPECT_EQ(decoded(type(), firstBytes(payload, headerBytes - 1)), std::nullopt);
    });
}

TEST_P(Decoding, OnlySixEncapsulationIdentifiersAreAccepted)
{
    const auto wrongIdentifierIsAccepted = [&](std::uint16_t id, Bytes payload) {
        const auto identifier = header(id);
        std::copy_n(identifier.begin(), 2, payload.begin());
        return decoded(type(), payload).has_value();
    };
    for (std::uint32_t id = 0; id <= 0xFFFF; ++id) {
        const auto known = std::find_if(encodings.begin(), encodings.end(),
                                        [id](const Encoding& encoding) { return encoding.id == id; });
        if (known != encodings.end()) {
            EXPECT_EQ(decoded(type(), payloadOf(*known, members())), members()) << *known;
            continue;
        }
        for (const auto& encoding : encodings) {
            ASSERT_FALSE(
                wrongIdentifierIsAccepted(static_cast<std::uint16_t>(id), payloadOf(encoding, members())))
                << id << " over a payload in " << encoding;
        }
    }
}

TEST_P(Decoding, ParameterListsAreRefused)
{
    for (const auto encoding : {EncodingAlgorithmFlag::PL_CDR, EncodingAlgorithmFlag::PL_CDR2}) {
        const auto payload = parameterList(encoding, members());
        EXPECT_EQ(payload.at(1) & ~1, encoding);
        EXPECT_EQ(decoded(type(), payload), std::nullopt) << encoding;
    }
}

TEST_P(Decoding, MarksThePayloadWithTheByteOrderOfItsHeader)
{
    for (const auto& encoding : encodings) {
        const auto bytes = payloadOf(encoding, members());
        SerializedPayload_t payload(static_cast<std::uint32_t>(bytes.size()));
        std::copy(bytes.begin(), bytes.end(), payload.data);
        payload.length = payload.max_size;
        payload.encapsulation = 0x7777;
        EXPECT_TRUE(type().data->deserialize(&payload, Sample(type()).get()));
        EXPECT_EQ(payload.encapsulation, encoding.order == std::endian::big ? CDR_BE : CDR_LE) << encoding;
    }
}

} // namespace plex::test
