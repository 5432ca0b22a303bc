// SPDX-License-Identifier: Apache-2.0
// The encoding of types that describe their members: what generated code stands on.
#include <plex/module/CdrInput.hpp>
#include <plex/module/CdrOutput.hpp>

#include <fastcdr/FastBuffer.h>
#include <fastcdr/exceptions/Exception.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <variant>

namespace plex::test
{

// What is described below has names that all files could see: constants of its description count as unused
// otherwise.

enum class Color : std::int32_t { Red = 0, Blue = 5 };

constexpr bool isKnown(Color color)
{
    return color == Color::Red || color == Color::Blue;
}

struct Pair {
    std::uint8_t first = 0;
    double second = 0;
    bool operator==(const Pair&) const = default;
};

struct Point {
    std::int32_t x = 0;
    std::int32_t y = 7;
    bool operator==(const Point&) const = default;
};

struct Choice {
    std::int32_t label = 0;
    std::variant<std::monostate, double, std::string> value;
    bool operator==(const Choice&) const = default;
};

struct Maybe {
    std::uint8_t before = 1;
    std::optional<double> number;
    std::uint8_t after = 2;
};

struct Palette {
    std::vector<std::uint32_t> numbers;
    Color color = Color::Red;
};

/// The same members for each extensibility.
template <int Kind>
struct All {
    std::uint8_t before = 0;
    std::string name;
    std::vector<double> samples;
    std::vector<std::string> words;
    ovra::plex::Booleans flags;
    std::array<std::array<std::int16_t, 2>, 2> matrix{};
    std::array<Point, 2> points{};
    std::vector<Pair> pairs;
    Color color = Color::Red;
    std::vector<Color> colors;
    std::optional<double> maybe;
    std::optional<Pair> maybePair;
    Choice choice;
    std::int64_t after = 0;
    bool operator==(const All&) const = default;
};

using Final = All<0>;
using Appendable = All<1>;
using Mutable = All<2>;

} // namespace plex::test

namespace ovra::plex::ps::cdr
{

using namespace ::plex::test; // NOLINT(google-build-using-namespace): their types are described here

template <>
struct Fields<Pair> {
    static constexpr Extensibility extensibility = Extensibility::Final;
    static constexpr std::array<std::size_t, 2> leastSizes{9, 9};

    static void forEach(auto& value, auto&& visit)
    {
        visit(Field<0>(), value.first);
        visit(Field<1>(), value.second);
    }

    static void forEachKey(auto& value, auto&& visit) { forEach(value, visit); }
};

template <>
struct Fields<Point> {
    static constexpr Extensibility extensibility = Extensibility::Appendable;

    static void forEach(auto& value, auto&& visit)
    {
        visit(Field<0>(), value.x);
        visit(Field<1>(), value.y, 7);
    }

    static void forEachKey(auto& value, auto&& visit) { visit(Field<1>(), value.y); }
};

template <>
struct Fields<Maybe> {
    static constexpr Extensibility extensibility = Extensibility::Final;

    static void forEach(auto& value, auto&& visit)
    {
        visit(Field<0>(), value.before);
        visit(Field<1>(), value.number);
        visit(Field<2>(), value.after);
    }
};

template <>
struct Fields<Palette> {
    static constexpr Extensibility extensibility = Extensibility::Final;

    static void forEach(auto& value, auto&& visit)
    {
        visit(Field<0, List<Any, 1>>(), value.numbers);
        visit(Field<1>(), value.color);
    }
};

template <>
struct Fields<Choice> {
    static constexpr Extensibility extensibility = Extensibility::Mutable;
    static constexpr bool isUnion = true;
    static constexpr bool discriminatorIsKey = false;

    static std::int32_t discriminator(const Choice& value) { return value.label; }

    static bool select(Choice& value, std::int32_t label)
    {
        value.label = label;
        if (label == 1) {
            value.value.emplace<1>();
        } else if (label == 2) {
            value.value.emplace<2>();
        } else {
            value.value.emplace<0>();
        }
        return label < 10;
    }

    static void visitCase(auto& value, auto&& visit)
    {
        if (value.label == 1) {
            visit(Field<10>(), std::get<1>(value.value));
        } else if (value.label == 2) {
            visit(Field<20, Text<4>>(), std::get<2>(value.value));
        }
    }
};

template <int Kind>
struct Fields<All<Kind>> {
    static constexpr auto extensibility = static_cast<Extensibility>(Kind);

    static void forEach(auto& value, auto&& visit)
    {
        visit(Field<0>(), value.before);
        visit(Field<1, Text<8>>(), value.name);
        visit(Field<2, List<Any, 4>>(), value.samples);
        visit(Field<3, List<Text<3>, 0>>(), value.words);
        visit(Field<4>(), value.flags);
        visit(Field<5>(), value.matrix);
        visit(Field<6>(), value.points);
        visit(Field<7>(), value.pairs);
        visit(Field<0x4000>(), value.color);
        visit(Field<9>(), value.colors);
        visit(Field<10>(), value.maybe);
        visit(Field<11>(), value.maybePair);
        visit(Field<12>(), value.choice);
        visit(Field<13, Any, true>(), value.after);
    }

    static void forEachKey(auto& value, auto&& visit)
    {
        visit(Field<1, Text<8>>(), value.name);
        visit(Field<6>(), value.points);
        visit(Field<12>(), value.choice);
    }
};

} // namespace ovra::plex::ps::cdr

namespace plex::test
{

namespace
{

using namespace ovra::plex::ps::cdr; // NOLINT(google-build-using-namespace): that is what is tested
using eprosima::fastcdr::FastBuffer;
using eprosima::fastcdr::exception::Exception;

using Bytes = std::string;

constexpr auto bigEndian = Cdr::BIG_ENDIANNESS;
constexpr auto littleEndian = Cdr::LITTLE_ENDIANNESS;

template <class T>
Bytes encoded(const T& value, CdrVersion version, Cdr::Endianness order = bigEndian)
{
    Bytes bytes(4096, '\0'); // Fast CDR leaves padding as it is
    FastBuffer buffer(bytes.data(), bytes.size());
    Cdr cdr(buffer, order, version);
    cdr.set_encoding_flag(encodingOf(Fields<T>::extensibility, version));
    cdr.serialize_encapsulation();
    serializeFields(cdr, value);
    bytes.resize(cdr.get_serialized_data_length());
    return bytes;
}

template <class T>
void decode(Bytes& bytes, T& value)
{
    FastBuffer buffer(bytes.data(), bytes.size());
    Cdr cdr(buffer, littleEndian, CdrVersion::XCDRv2);
    cdr.read_encapsulation();
    deserializeFields(cdr, cdr.get_encoding_flag(), value);
}

template <class T>
bool isDecoded(Bytes bytes, T& value)
{
    try {
        decode(bytes, value);
        return true;
    } catch (const Exception&) {
        return false;
    }
}

/// Without encapsulation, as hexadecimal digits with blanks between groups of four bytes.
std::string hex(const Bytes& bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 4; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text += i > 4 && i % 4 == 0 ? " " : "";
        text += {digits[byte >> 4U], digits[byte & 15U]};
    }
    return text;
}

Bytes payload(std::uint8_t encapsulation, const std::string& body)
{
    return Bytes{'\0', static_cast<char>(encapsulation), '\0', '\0'} + body;
}

template <class T>
T example()
{
    T value;
    value.before = 1;
    value.name = "abc";
    value.samples = {1.5, -2};
    value.words = {"", "xyz"};
    value.flags = {true, false, true};
    value.matrix = {{{1, 2}, {3, 4}}};
    value.points = {{{1, 2}, {3, 4}}};
    value.pairs = {{1, 2.5}, {3, 4.5}};
    value.color = Color::Blue;
    value.colors = {Color::Red, Color::Blue};
    value.maybe = 0.5;
    value.maybePair = Pair{9, 0.25};
    value.choice = {2, std::string("four")};
    value.after = -1;
    return value;
}

constexpr std::array<CdrVersion, 2> versions{CdrVersion::XCDRv1, CdrVersion::XCDRv2};
constexpr std::array<Cdr::Endianness, 2> orders{littleEndian, bigEndian};

template <class T>
class FieldsOf : public testing::Test
{
};

using Kinds = testing::Types<Final, Appendable, Mutable>;

class KindName
{
public:
    template <class T>
    static std::string GetName(int /*index*/)
    {
        if (std::is_same_v<T, Final>) {
            return "Final";
        }
        return std::is_same_v<T, Appendable> ? "Appendable" : "Mutable";
    }
};

TYPED_TEST_SUITE(FieldsOf, Kinds, KindName);

TYPED_TEST(FieldsOf, AreReadAsTheyWereWritten)
{
    for (const auto version : versions) {
        for (const auto order : orders) {
            TypeParam value;
            value.maybe = 99; // what was there before does not stay
            Bytes bytes = encoded(example<TypeParam>(), version, order);
            decode(bytes, value);
            EXPECT_EQ(value, example<TypeParam>());
            bytes = encoded(TypeParam(), version, order);
            decode(bytes, value);
            EXPECT_EQ(value, TypeParam());
        }
    }
}

TYPED_TEST(FieldsOf, TakeAsManyBytesAsIsSaid)
{
    for (const auto version : versions) {
        for (const auto& value : {TypeParam(), example<TypeParam>()}) {
            std::size_t alignment = 0;
            EXPECT_EQ(fieldsSize(version, value, alignment) + 4, encoded(value, version).size());
            EXPECT_EQ(alignment + 4, encoded(value, version).size());
        }
    }
}

TYPED_TEST(FieldsOf, AreRefusedWhereTheyAreCutOff)
{
    for (const auto version : versions) {
        for (const auto order : orders) {
            const Bytes whole = encoded(example<TypeParam>(), version, order);
            for (std::size_t size = 4; size < whole.size(); ++size) {
                TypeParam value;
                EXPECT_FALSE(isDecoded(whole.substr(0, size), value)) << size;
            }
        }
    }
}

/// Whatever four bytes of a payload are replaced by, reading ends, and nothing is made that the payload can
/// not fill.
TYPED_TEST(FieldsOf, TakeNoMoreMemoryThanThePayloadFills)
{
    for (const auto version : versions) {
        const Bytes whole = encoded(example<TypeParam>(), version);
        for (std::size_t at = 4; at + 4 <= whole.size(); ++at) {
            for (const Bytes& number : {Bytes("\xFF\xFF\xFF\xFF", 4), Bytes("\x0F\xFF\xFF\xFF", 4),
                                        Bytes("\x00\x00\xFF\xFF", 4), Bytes("\x00\x00\x00\x00", 4)}) {
                TypeParam value;
                isDecoded(Bytes(whole).replace(at, 4, number), value);
                EXPECT_LE(value.samples.capacity() * sizeof(double), whole.size());
                EXPECT_LE(value.words.capacity() * sizeof(std::uint32_t), whole.size());
                EXPECT_LE(value.flags.size(), whole.size());
                EXPECT_LE(value.pairs.capacity(), whole.size());
                EXPECT_LE(value.name.capacity(), whole.size());
            }
        }
    }
}

TYPED_TEST(FieldsOf, AreRefusedBeyondTheirBounds)
{
    const auto refused = [](auto change) {
        for (const auto version : versions) {
            auto value = example<TypeParam>();
            change(value);
            EXPECT_THROW(encoded(value, version), eprosima::fastcdr::exception::BadParamException);
        }
    };
    refused([](TypeParam& value) { value.name = "123456789"; });
    refused([](TypeParam& value) { value.name = std::string("a\0b", 3); });
    refused([](TypeParam& value) { value.samples.resize(5); });
    refused([](TypeParam& value) { value.words = {"four"}; });
    refused([](TypeParam& value) { value.color = static_cast<Color>(4); });
    refused([](TypeParam& value) { value.colors = {static_cast<Color>(4)}; });
    refused([](TypeParam& value) { value.choice.value = "five5"; });
}

TEST(FieldsInVersion2, OfAFinalTypeHaveNoHeaders)
{
    EXPECT_EQ(hex(encoded(Pair{1, 2.0}, CdrVersion::XCDRv2)), "01000000 40000000 00000000");
}

TEST(FieldsInVersion1, AlignEightBytes)
{
    EXPECT_EQ(hex(encoded(Pair{1, 2.0}, CdrVersion::XCDRv1)), "01000000 00000000 40000000 00000000");
}

TEST(FieldsInVersion2, OfAnAppendableTypeFollowTheirLength)
{
    EXPECT_EQ(hex(encoded(Point{1, 2}, CdrVersion::XCDRv2)), "00000008 00000001 00000002");
}

TEST(FieldsInVersion2, OfAnEarlierVersionLackWhatWasAdded)
{
    Point point{3, 4};
    EXPECT_TRUE(isDecoded(payload(0x08, Bytes("\0\0\0\4\0\0\0\1", 8)), point));
    EXPECT_EQ(point, (Point{1, 7}));
}

TEST(FieldsInVersion2, OfALaterVersionAreSkipped)
{
    Point point;
    EXPECT_TRUE(isDecoded(payload(0x08, Bytes("\0\0\0\x0c\0\0\0\1\0\0\0\2\0\0\0\3", 16)), point));
    EXPECT_EQ(point, (Point{1, 2}));
}

TEST(FieldsInVersion2, AreRefusedWhereTheirLengthCutsAMember)
{
    Point point;
    EXPECT_FALSE(isDecoded(payload(0x08, Bytes("\0\0\0\6\0\0\0\1\0\0\0\2", 12)), point));
    EXPECT_FALSE(isDecoded(payload(0x08, Bytes("\0\0\0\x09\0\0\0\1\0\0\0\2", 12)), point));
}

TEST(FieldsInVersion2, OfAMutableTypeHaveLengthCodes)
{
    // The length, the discriminator as 4 bytes, and the text, whose own length is the header's.
    EXPECT_EQ(hex(encoded(Choice{2, std::string("ab")}, CdrVersion::XCDRv2)),
              "00000013 20000000 00000002 50000014 00000003 616200");
    EXPECT_EQ(hex(encoded(Choice{1, 2.0}, CdrVersion::XCDRv2)),
              "00000014 20000000 00000001 3000000a 40000000 00000000");
    EXPECT_EQ(hex(encoded(Choice{3, {}}, CdrVersion::XCDRv2)), "00000008 20000000 00000003");
}

TEST(FieldsInVersion1, OfAMutableTypeEndWithAMark)
{
    EXPECT_EQ(hex(encoded(Choice{2, std::string("ab")}, CdrVersion::XCDRv1)),
              "00000004 00000002 00140007 00000003 61620000 3f020000");
    // In a member, alignment begins anew.
    EXPECT_EQ(hex(encoded(Choice{1, 2.0}, CdrVersion::XCDRv1)),
              "00000004 00000001 000a0008 40000000 00000000 3f020000");
    EXPECT_EQ(hex(encoded(Choice{1, 2.0}, CdrVersion::XCDRv1, littleEndian)),
              "00000400 01000000 0a000800 00000000 00000040 023f0000");
}

TEST(FieldsInVersion2, OfAMutableTypeMayHaveAnyHeader)
{
    Choice choice;
    const Bytes discriminator("\x40\0\0\0\0\0\0\4\0\0\0\2",
                              12); // a length of its own, which it could do without
    const Bytes unknown("\x00\0\0\x63\x01\0\0\0", 8);
    const Bytes text("\x40\0\0\x14\0\0\0\7\0\0\0\3ab\0", 15);
    EXPECT_TRUE(isDecoded(payload(0x0A, Bytes("\0\0\0\x23", 4) + discriminator + unknown + text), choice));
    EXPECT_EQ(choice, (Choice{2, std::string("ab")}));
}

TEST(FieldsInVersion2, AreRefusedWhereAnUnknownOneMustBeUnderstood)
{
    Choice choice;
    const Bytes known("\0\0\0\x10\x20\0\0\0\0\0\0\3", 12);
    EXPECT_TRUE(isDecoded(payload(0x0A, known + Bytes("\x20\0\0\x63\0\0\0\1", 8)), choice));
    EXPECT_FALSE(isDecoded(payload(0x0A, known + Bytes("\xA0\0\0\x63\0\0\0\1", 8)), choice));
}

TEST(FieldsInVersion1, AreRefusedWhereAnUnknownOneMustBeUnderstood)
{
    Choice choice;
    const Bytes known("\0\0\0\4\0\0\0\3", 8);
    const Bytes end("\x3f\2\0\0", 4);
    EXPECT_TRUE(isDecoded(payload(0x02, known + Bytes("\0\x63\0\4\0\0\0\1", 8) + end), choice));
    EXPECT_FALSE(isDecoded(payload(0x02, known + Bytes("\x40\x63\0\4\0\0\0\1", 8) + end), choice));
}

TEST(FieldsInVersion1, MayHaveLongHeadersAndOnesThatAreIgnored)
{
    Choice choice;
    const Bytes discriminator("\x3f\1\0\x08\0\0\0\0\0\0\0\4\0\0\0\1", 16);
    const Bytes ignored("\x3f\3\0\4\0\0\0\0", 8);
    const Bytes number("\x3f\1\0\x08\0\0\0\x0a\0\0\0\x08\x40\0\0\0\0\0\0\0", 20);
    const Bytes end("\x3f\2\0\0", 4);
    EXPECT_TRUE(isDecoded(payload(0x02, discriminator + ignored + number + end), choice));
    EXPECT_EQ(choice, (Choice{1, 2.0}));
}

TEST(Text, EndsWithItsOnlyNul)
{
    Choice choice;
    const Bytes start("\0\0\0\4\0\0\0\2\0\x14\0\7\0\0\0\3", 16);
    const Bytes end("\0\x3f\2\0\0", 5);
    EXPECT_TRUE(isDecoded(payload(0x02, start + Bytes("ab\0", 3) + end), choice));
    EXPECT_FALSE(isDecoded(payload(0x02, start + Bytes("abc", 3) + end), choice));
    EXPECT_FALSE(isDecoded(payload(0x02, start + Bytes("a\0\0", 3) + end), choice));
}

TEST(Text, MayBeEmptyWithoutANul)
{
    Choice choice;
    const Bytes bytes("\0\0\0\4\0\0\0\2\0\x14\0\4\0\0\0\0\x3f\2\0\0", 20);
    EXPECT_TRUE(isDecoded(payload(0x02, bytes), choice));
    EXPECT_EQ(choice, (Choice{2, std::string()}));
}

TEST(Bounds, AreOfWhatIsReadAsWell)
{
    Choice choice;
    const Bytes text("\0\0\0\4\0\0\0\2\0\x14\0\x0a\0\0\0\6fives\0\0\0\x3f\2\0\0", 28);
    EXPECT_FALSE(isDecoded(payload(0x02, text), choice));
    Bytes bytes = encoded(example<Final>(), CdrVersion::XCDRv2);
    Final value;
    ASSERT_TRUE(isDecoded(bytes, value));
    bytes.replace(16, 4, Bytes("\0\0\0\5", 4)); // of four numbers at most
    EXPECT_FALSE(isDecoded(bytes, value));
}

TEST(Union, IsRefusedWithALabelThatItDoesNotHave)
{
    Choice choice;
    EXPECT_FALSE(isDecoded(payload(0x0A, Bytes("\0\0\0\x08\x20\0\0\0\0\0\0\x0a", 12)), choice));
    EXPECT_FALSE(isDecoded(payload(0x0A, Bytes("\0\0\0\0", 4)), choice));
    EXPECT_FALSE(isDecoded(payload(0x0A, Bytes("\0\0\0\x0c\x30\0\0\x0a\0\0\0\0\0\0\0\0", 16)), choice));
}

TEST(OptionalMembers, HaveAHeaderInVersion1AndAMarkInVersion2)
{
    Maybe value;
    EXPECT_EQ(hex(encoded(value, CdrVersion::XCDRv1)), "01000000 00010000 02");
    EXPECT_EQ(hex(encoded(value, CdrVersion::XCDRv2)), "010002");
    value.number = 2.0;
    EXPECT_EQ(hex(encoded(value, CdrVersion::XCDRv1)), "01000000 00010008 40000000 00000000 02");
    EXPECT_EQ(hex(encoded(value, CdrVersion::XCDRv2)), "01010000 40000000 00000000 02");
}

/// What is said of a payload with a Choice, version 2, big-endian.
std::string complaintOf(const Bytes& body)
{
    Bytes bytes = payload(0x0A, body);
    Choice choice;
    try {
        decode(bytes, choice);
    } catch (const eprosima::fastcdr::exception::BadParamException& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST(RefusedPayload, SaysWhatIsWrongWithIt)
{
    const Bytes text("\0\0\0\x13\x20\0\0\0\0\0\0\2\x50\0\0\x14\0\0\0\3", 20);
    EXPECT_EQ(complaintOf(text + Bytes("ab\0", 3)), "nothing");
    EXPECT_EQ(complaintOf(text + "abc"), "A string does not end with its only NUL");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\x0a\x00\0\0\0\0\0\0\2\0\0", 14)),
              "A value goes beyond the length in front of it");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\x09\x20\0\0\0\0\0\0\2", 12)),
              "A length goes beyond the end of the payload");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\x16\x20\0\0\0\0\0\0\2\x50\0\0\x14\0\0\0\6fives\0", 26)),
              "A string is longer than its bound");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\x05\x80\0\0\x63\1", 9)),
              "A union's member comes before its discriminator");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\x0d\x20\0\0\0\0\0\0\2\x80\0\0\x63\1", 17)),
              "A member that must be understood is not known");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\x08\x20\0\0\0\0\0\0\x0a", 12)),
              "A union has a value that is no label");
    EXPECT_EQ(complaintOf(Bytes("\0\0\0\0", 4)), "A union has no discriminator");
}

/// What is said of a payload with a value of a type in a given encapsulation, big-endian.
template <class T>
std::string complaintOf(unsigned char encapsulation, const Bytes& body)
{
    Bytes bytes = payload(encapsulation, body);
    T value;
    try {
        decode(bytes, value);
    } catch (const eprosima::fastcdr::exception::BadParamException& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST(RefusedPayload, SaysWhatIsWrongWithItsLengthsAndHeaders)
{
    EXPECT_EQ(complaintOf<Choice>(0x0A, Bytes("\0\0\0\x10\x40\0\0\0\0\0\0\x08\0\0\0\2\0\0\0\0", 20)),
              "A value ends before the length in front of it does");
    EXPECT_EQ(complaintOf<Choice>(0x0A, Bytes("\0\0\0\x13\x20\0\0\0\0\0\0\2\x50\0\0\x14\0\0\0\3", 20) +
                                            Bytes("ab\0\0\0\0\0\0\0\0", 10)),
              "The payload goes on behind the value");
    EXPECT_EQ(complaintOf<Choice>(0x02, Bytes("\x3f\4\0\0", 4)), "A member has an id that is reserved");
    EXPECT_EQ(complaintOf<Choice>(0x02, Bytes("\x3f\1\0\4\0\0\0\0", 8)),
              "A long header of a member is not as long as it is");
    EXPECT_EQ(complaintOf<Maybe>(0x00, Bytes("\1\0\0\0\0\2\0\0\2", 9)),
              "An optional member has another one's header");
}

/// What is said of a value of Final.
template <class Change>
std::string complaintOfValue(Change change)
{
    try {
        Final value;
        change(value);
        encoded(value, CdrVersion::XCDRv2);
    } catch (const eprosima::fastcdr::exception::BadParamException& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST(RefusedValue, SaysWhatIsWrongWithIt)
{
    EXPECT_EQ(complaintOfValue([](Final&) {}), "nothing");
    EXPECT_EQ(complaintOfValue([](Final& value) { value.name = "123456789"; }),
              "A string is longer than its bound");
    EXPECT_EQ(complaintOfValue([](Final& value) { value.name = std::string(1, '\0'); }),
              "A string holds a NUL, at which readers would end it");
    EXPECT_EQ(complaintOfValue([](Final& value) { value.samples.resize(5); }),
              "A sequence is longer than its bound");
    EXPECT_EQ(complaintOfValue([](Final& value) { value.color = static_cast<Color>(4); }),
              "An enum has a value that is none of its enumerators");
}

/// What is said of a payload with numbers and a colour, each of which has 4 bytes.
std::string complaintOfPalette(const Bytes& body)
{
    Bytes bytes = payload(0x06, body);
    Palette palette;
    try {
        decode(bytes, palette);
    } catch (const eprosima::fastcdr::exception::BadParamException& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST(RefusedPayload, SaysThatAValueIsBeyondItsBounds)
{
    EXPECT_EQ(complaintOfPalette(Bytes("\0\0\0\1\0\0\0\2\0\0\0\5", 12)), "nothing");
    EXPECT_EQ(complaintOfPalette(Bytes("\0\0\0\1\0\0\0\2\0\0\0\4", 12)),
              "An enum has a value that is none of its enumerators");
    EXPECT_EQ(complaintOfPalette(Bytes("\0\0\0\2\0\0\0\2\0\0\0\2\0\0\0\5", 16)),
              "A sequence is longer than its bound");
}

TEST(Key, HoldsKeyMembersOnlyAndThoseWithinThem)
{
    Bytes bytes(64, '\0');
    FastBuffer buffer(bytes.data(), bytes.size());
    Cdr cdr(buffer, bigEndian, CdrVersion::XCDRv1);
    Final value;
    value.name = "ab";
    value.points = {{{1, 2}, {3, 4}}};
    value.choice = {1, 2.0};
    serializeKeyFields(cdr, value);
    bytes.resize(cdr.get_serialized_data_length());
    EXPECT_EQ(hex("----" + bytes), "00000003 61620000 00000002 00000004 00000001 00000000 40000000 00000000");
}

} // namespace

} // namespace plex::test
