// SPDX-License-Identifier: Apache-2.0
// Payloads that are cut off, or in which lengths, labels and numbers are others: what the generated functions
// make of them is what the codec makes of them that was written apart.
#include "Payloads.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <dds/FixedAdapter.hpp>
#include <dds/GrowingAdapter.hpp>
#include <dds/LooseAdapter.hpp>
#include <idl/AllocatedBytes.hpp>
#include <map>
#include <optional>

namespace plex::test
{

namespace
{

namespace idl = ovra::plex::idl;
namespace impl = generated::ddsimpl::everything;

using everything::Door;
using idl::XcdrVersion;

constexpr std::size_t allowed = 1000000; ///< bytes that a payload of some hundred bytes may make one allocate

const idl::Model& model()
{
    static const idl::Model result = modelOfFile("everything.idl");
    return result;
}

template <class Adapter>
struct TypeOf;

template <>
struct TypeOf<impl::Fixed> {
    static constexpr const char* name = "everything::Fixed";
};

template <>
struct TypeOf<impl::Growing> {
    static constexpr const char* name = "everything::Growing";
};

template <>
struct TypeOf<impl::Loose> {
    static constexpr const char* name = "everything::Loose";
};

template <class T>
void fillAll(T& value)
{
    value.setName("the dome");
    value.setFlag(true);
    value.setLetter('x');
    value.setNumber(-5);
    value.setDoor(Door::OPEN);
    value.setAlarms(everything::Alarms::WIND);
    value.editMatrix()[1][2] = 1.5;
    value.setPoints({{{1, 2.5}, {3, 4.5}}});
    value.setSamples(std::vector<double>{1, 2, 3});
    value.setWords(std::vector<std::string>{"a", "", "bc"});
    value.resizeFlags(2)[1] = true;
    value.setIntervals(std::vector<everything::Interval>{{1, 2}, {3, 4}});
    value.setDoors(std::vector<Door>{Door::OPEN, Door::CLOSED});
    value.editInterval().low = 9;
    value.setNote({"note", 3});
    value.editCommand().width(2.5);
    value.editChoice().point({7, 8.5});
    value.editSwitches().letter.b(1.25);
    value.editSwitches().wanted.minus("wanted");
    value.editSwitches().yes.yes(0.25);
    value.setStamp({10, 20});
    value.setMaybe(0.5);
    value.setText("four");
    value.makePoint().value = 6.5;
    value.makeList() = {1, 2, 3};
}

/// How a payload is written.
struct Form {
    XcdrVersion version;
    std::endian order;
};

std::ostream& operator<<(std::ostream& out, const Form& form)
{
    return out << (form.version == XcdrVersion::Xcdr1 ? "version 1, " : "version 2, ")
               << (form.order == std::endian::little ? "little-endian" : "big-endian");
}

constexpr std::array<Form, 4> forms{{{XcdrVersion::Xcdr1, std::endian::little},
                                     {XcdrVersion::Xcdr1, std::endian::big},
                                     {XcdrVersion::Xcdr2, std::endian::little},
                                     {XcdrVersion::Xcdr2, std::endian::big}}};

std::string hexOf(const Bytes& bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

template <class Adapter>
class MalformedPayloads : public testing::Test
{
protected:
    using Value = typename Adapter::DdsType;

    static const idl::Type& type() { return *model().findType(TypeOf<Adapter>::name); }

    static Bytes payload(const Value& value, const Form& form)
    {
        const auto datum = idl::decode(
            type(), encoded<Adapter>(value, eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION), options);
        return idl::encode(type(), datum, {form.version, form.order, false}, options);
    }

    /// Values with and without what is optional.
    static std::array<Value, 2> values()
    {
        Adapter full;
        fillAll(full);
        return {full.wire(), Value()};
    }

    /// A value as the codec reads it, written anew; nothing where it is refused.
    std::optional<Bytes> readByCodec(const Bytes& bytes)
    {
        try {
            return idl::encode(type(), idl::decode(type(), bytes, options), {}, options);
        } catch (const idl::CodecError& error) {
            complaint_ = error.what();
            return std::nullopt;
        }
    }

    /// The same of the generated functions.
    std::optional<Bytes> readByGenerated(const Bytes& bytes)
    {
        Value value;
        const AllocatedBytes allocated;
        const bool isRead = decoder_.decode(bytes, value);
        EXPECT_LT(allocated.count(), allowed) << hexOf(bytes);
        if (!isRead) {
            return std::nullopt;
        }
        return encoded<Adapter>(value, eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION);
    }

    /// @returns whether both make the same of a payload.
    bool agree(const Bytes& bytes)
    {
        complaint_.clear();
        const auto expected = readByCodec(bytes);
        const auto found = readByGenerated(bytes);
        if (expected == found) {
            return true;
        }
        ADD_FAILURE() << "the codec " << (expected ? "reads " + hexOf(*expected) : complaint_)
                      << "\nthe generated functions " << (found ? "read  " + hexOf(*found) : "refuse");
        return false;
    }

    static constexpr idl::CodecOptions options{};
    Decoder<Adapter> decoder_;
    std::string complaint_;
};

using Adapters = testing::Types<impl::Fixed, impl::Growing, impl::Loose>;

class TypeName
{
public:
    template <class Adapter>
    static std::string GetName(int index)
    {
        return std::array{"Final", "Appendable", "Mutable"}.at(static_cast<std::size_t>(index));
    }
};

TYPED_TEST_SUITE(MalformedPayloads, Adapters, TypeName);

TYPED_TEST(MalformedPayloads, BeginWithWholeOnes)
{
    for (const auto& value : this->values()) {
        for (const Form& form : forms) {
            const Bytes bytes = this->payload(value, form);
            typename TypeParam::DdsType read;
            EXPECT_TRUE(this->decoder_.decode(bytes, read)) << form;
            EXPECT_EQ(read, value) << form;
        }
    }
}

TYPED_TEST(MalformedPayloads, AreRefusedWhereTheyAreCutOff)
{
    for (const auto& value : this->values()) {
        for (const Form& form : forms) {
            const Bytes whole = this->payload(value, form);
            for (std::size_t size = 0; size < whole.size(); ++size) {
                const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
                EXPECT_EQ(this->readByGenerated(part), std::nullopt) << form << ", " << size;
                EXPECT_EQ(this->readByCodec(part), std::nullopt) << form << ", " << size;
            }
        }
    }
}

TYPED_TEST(MalformedPayloads, MayEndWithUpToThreeBytesMore)
{
    for (const Form& form : forms) {
        const Bytes whole = this->payload(this->values()[0], form);
        for (std::size_t more = 0; more <= 3; ++more) {
            Bytes bytes = whole;
            bytes.resize(whole.size() + more);
            EXPECT_NE(this->readByGenerated(bytes), std::nullopt) << form << ", " << more;
        }
        const bool mayBeLater =
            std::is_same_v<TypeParam, impl::Growing> && form.version == XcdrVersion::Xcdr1;
        for (const std::size_t more : std::array<std::size_t, 4>{4, 5, 8, 100}) {
            Bytes bytes = whole;
            bytes.resize(whole.size() + more);
            EXPECT_EQ(this->readByGenerated(bytes).has_value(), mayBeLater) << form << ", " << more;
            EXPECT_TRUE(this->agree(bytes)) << form << ", " << more;
        }
    }
}

/// Lengths, sizes in headers, ids, labels, enumerators and flags lie at whatever place.
TYPED_TEST(MalformedPayloads, WithOtherNumbersAreReadOrRefusedAsTheCodecDoes)
{
    constexpr std::array<std::uint32_t, 8> numbers{0,          1,          2,          0x0fffffff,
                                                   0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};
    for (const auto& value : this->values()) {
        for (const Form& form : forms) {
            const Bytes whole = this->payload(value, form);
            for (std::size_t at = 4; at + 4 <= whole.size(); ++at) {
                for (const std::uint32_t number : numbers) {
                    Bytes bytes = whole;
                    for (unsigned i = 0; i < 4; ++i) {
                        const unsigned shift = 8 * (form.order == std::endian::little ? i : 3 - i);
                        bytes[at + i] = static_cast<std::uint8_t>(number >> shift);
                    }
                    ASSERT_TRUE(this->agree(bytes)) << form << ", " << number << " at " << at << "\n"
                                                    << hexOf(bytes);
                }
            }
        }
    }
}

TYPED_TEST(MalformedPayloads, WithOtherBytesAreReadOrRefusedAsTheCodecDoes)
{
    for (const auto& value : this->values()) {
        for (const Form& form : forms) {
            const Bytes whole = this->payload(value, form);
            for (std::size_t at = 4; at < whole.size(); ++at) {
                for (const unsigned change : {0x01U, 0x02U, 0x40U, 0x80U, 0xffU}) {
                    Bytes bytes = whole;
                    bytes[at] ^= static_cast<std::uint8_t>(change);
                    ASSERT_TRUE(this->agree(bytes)) << form << ", " << change << " at " << at << "\n"
                                                    << hexOf(bytes);
                }
            }
        }
    }
}

TYPED_TEST(MalformedPayloads, WithOtherEncodingsAreReadOrRefusedAsTheCodecDoes)
{
    for (const auto& value : this->values()) {
        for (const Form& form : forms) {
            for (unsigned identifier = 0; identifier <= 0x0cU; ++identifier) {
                Bytes bytes = this->payload(value, form);
                bytes[1] = static_cast<std::uint8_t>(identifier);
                EXPECT_TRUE(this->agree(bytes)) << form << ", as " << identifier << "\n" << hexOf(bytes);
            }
        }
    }
}

TYPED_TEST(MalformedPayloads, OfTwentyBytesTakeNoMegabyte)
{
    for (const std::uint8_t identifier : Bytes{0, 1, 2, 3, 6, 7, 8, 9, 10, 11}) {
        for (const std::uint8_t high : Bytes{0x00, 0x0f, 0x50, 0x70, 0x7f, 0xff}) {
            for (const std::uint8_t low : Bytes{0x00, 0x01, 0x0c, 0xff}) {
                Bytes bytes{0, identifier, 0, 0};
                while (bytes.size() < 20) {
                    bytes.insert(bytes.end(),
                                 identifier % 2 == 0
                                     ? std::initializer_list<std::uint8_t>{high, 0xff, 0xff, low}
                                     : std::initializer_list<std::uint8_t>{low, 0xff, 0xff, high});
                }
                EXPECT_TRUE(this->agree(bytes)) << hexOf(bytes);
            }
        }
    }
}

} // namespace

} // namespace plex::test
