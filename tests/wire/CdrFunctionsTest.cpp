// SPDX-License-Identifier: Apache-2.0
#include "TopicTypes.hpp"

#include <fastcdr/CdrSizeCalculator.hpp>
#include <fastcdr/FastBuffer.h>
#include <fastcdr/exceptions/Exception.h>

namespace plex::test
{

namespace
{

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::CdrSizeCalculator;
using eprosima::fastcdr::CdrVersion;
using eprosima::fastcdr::EncodingAlgorithmFlag;
using eprosima::fastcdr::FastBuffer;

/// Memory with a stream over it.
class Stream
{
public:
    explicit Stream(CdrVersion version, std::size_t size = 100)
        : memory_(size)
        , buffer_(memory_.data(), memory_.size())
        , cdr(buffer_, Cdr::LITTLE_ENDIANNESS, version)
    {
    }

    std::size_t written() const { return cdr.get_serialized_data_length(); }

private:
    std::vector<char> memory_;
    FastBuffer buffer_;

public:
    Cdr cdr;
};

AltAz valueFor(const AltAz*)
{
    return wireValue(1.5, -2.25);
}

DomeTemperature valueFor(const DomeTemperature*)
{
    return wireValue(21.75);
}

} // namespace

template <class Wire>
class CdrFunctions : public testing::Test
{
protected:
    const Wire value = valueFor(static_cast<const Wire*>(nullptr));

    Wire readFrom(Stream& stream) const
    {
        stream.cdr.reset();
        Wire result;
        eprosima::fastcdr::deserialize(stream.cdr, result);
        return result;
    }
};

using WireTypes = testing::Types<AltAz, DomeTemperature>;
TYPED_TEST_SUITE(CdrFunctions, WireTypes, );

TYPED_TEST(CdrFunctions, ReadWhatTheyWriteInEveryVersionOfCdr)
{
    for (const auto version : {CdrVersion::DDS_CDR, CdrVersion::XCDRv1, CdrVersion::XCDRv2}) {
        Stream stream(version);
        eprosima::fastcdr::serialize(stream.cdr, this->value);
        EXPECT_EQ(stream.written(), sizeof(TypeParam) + (version == CdrVersion::XCDRv2 ? 4 : 0));
        EXPECT_EQ(this->readFrom(stream), this->value);
    }
}

TYPED_TEST(CdrFunctions, AreWhatTheStreamOperatorsCall)
{
    Stream stream(CdrVersion::XCDRv2);
    stream.cdr << this->value;
    TypeParam read;
    stream.cdr.reset();
    stream.cdr >> read;
    EXPECT_EQ(read, this->value);
}

TYPED_TEST(CdrFunctions, CalculateTheSizeFromAnyAlignment)
{
    for (const auto version : {CdrVersion::XCDRv1, CdrVersion::XCDRv2}) {
        for (std::size_t offset = 0; offset < 9; ++offset) {
            Stream stream(version);
            for (std::size_t i = 0; i < offset; ++i) {
                stream.cdr << std::uint8_t{1};
            }
            stream.cdr << this->value;

            CdrSizeCalculator calculator(version);
            std::size_t alignment = offset;
            const auto size =
                eprosima::fastcdr::calculate_serialized_size(calculator, this->value, alignment);
            EXPECT_EQ(size, stream.written() - offset) << offset;
        }
    }
}

TYPED_TEST(CdrFunctions, LeaveTheCalculatorInItsEncoding)
{
    for (const auto encoding : {EncodingAlgorithmFlag::PLAIN_CDR2, EncodingAlgorithmFlag::DELIMIT_CDR2}) {
        CdrSizeCalculator calculator(CdrVersion::XCDRv2, encoding);
        std::size_t alignment = 0;
        eprosima::fastcdr::calculate_serialized_size(calculator, this->value, alignment);
        EXPECT_EQ(calculator.get_encoding(), encoding);
    }
}

TYPED_TEST(CdrFunctions, ReadOneValueAfterAnother)
{
    for (const auto version : {CdrVersion::XCDRv1, CdrVersion::XCDRv2}) {
        Stream stream(version);
        stream.cdr << std::uint8_t{7} << this->value << TypeParam{} << this->value;
        stream.cdr.reset();
        std::uint8_t before = 0;
        TypeParam first;
        TypeParam second = this->value;
        TypeParam third;
        stream.cdr >> before >> first >> second >> third;
        EXPECT_EQ(before, 7);
        EXPECT_EQ(first, this->value);
        EXPECT_EQ(second, TypeParam{});
        EXPECT_EQ(third, this->value);
    }
}

TYPED_TEST(CdrFunctions, ReadPlainVersion2WhereToldTo)
{
    Stream stream(CdrVersion::XCDRv2);
    const auto members = bitsOf(this->value);
    for (const auto member : members) {
        stream.cdr << std::bit_cast<double>(member);
    }
    stream.cdr.reset();
    TypeParam read;
    eprosima::fastcdr::deserialize(stream.cdr, read, EncodingAlgorithmFlag::PLAIN_CDR2);
    EXPECT_EQ(read, this->value);
}

TYPED_TEST(CdrFunctions, ThrowWhereTheBufferIsTooSmallToWrite)
{
    for (const auto version : {CdrVersion::XCDRv1, CdrVersion::XCDRv2}) {
        const std::size_t needed = sizeof(TypeParam) + (version == CdrVersion::XCDRv2 ? 4 : 0);
        for (std::size_t size = 0; size < needed; ++size) {
            Stream stream(version, size);
            EXPECT_THROW(eprosima::fastcdr::serialize(stream.cdr, this->value),
                         eprosima::fastcdr::exception::NotEnoughMemoryException)
                << size;
        }
    }
}

TYPED_TEST(CdrFunctions, ThrowWhereTheInputEndsTooEarly)
{
    for (const auto version : {CdrVersion::XCDRv1, CdrVersion::XCDRv2}) {
        const std::size_t needed = sizeof(TypeParam) + (version == CdrVersion::XCDRv2 ? 4 : 0);
        for (std::size_t size = 0; size < needed; ++size) {
            Stream whole(version, needed);
            whole.cdr << this->value;
            Stream part(version, size);
            std::copy_n(whole.cdr.get_buffer_pointer(), size, part.cdr.get_buffer_pointer());
            EXPECT_THROW(this->readFrom(part), eprosima::fastcdr::exception::Exception) << size;
        }
    }
}

TYPED_TEST(CdrFunctions, WriteNoKey)
{
    Stream stream(CdrVersion::XCDRv1, 0);
    EXPECT_NO_THROW(eprosima::fastcdr::serialize_key(stream.cdr, this->value));
    EXPECT_EQ(stream.written(), 0U);
}

} // namespace plex::test
