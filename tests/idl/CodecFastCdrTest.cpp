// SPDX-License-Identifier: Apache-2.0
// Fast CDR writes the same bytes, called as the code is that is generated for it.
#include "Codec.hpp"

#include <fastcdr/Cdr.h>
#include <fastcdr/FastBuffer.h>
#include <fastcdr/exceptions/Exception.h>
#include <fastcdr/xcdr/optional.hpp>

#include <array>

namespace plex::test
{

namespace
{

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::CdrVersion;
using eprosima::fastcdr::EncodingAlgorithmFlag;
using eprosima::fastcdr::MemberId;

enum class Level : std::int32_t { Low, High };

struct Inner {
    std::uint8_t a = 0;
    std::int32_t b = 0;
};

struct Sample {
    std::uint8_t o = 7;
    bool b = true;
    double d = -0.5;
    std::string s = "hello";
    std::vector<std::int32_t> q{1, 2, 3};
    std::vector<double> r{1.5};
    std::vector<std::uint8_t> u{1, 2, 3};
    std::vector<std::int16_t> h{-1};
    std::vector<std::string> names{"a", ""};
    std::array<std::array<std::int32_t, 3>, 2> m{{{1, 2, 3}, {4, 5, 6}}};
    Inner i{1, -2};
    std::vector<Inner> is{{3, 4}, {5, 6}};
    std::array<Inner, 2> ia{{{7, 8}, {9, 10}}};
    std::array<std::array<Inner, 1>, 2> ja{{{{{1, 2}}}, {{{3, 4}}}}};
    std::vector<std::array<std::int32_t, 2>> va{{1, 2}, {3, 4}};
    std::vector<std::vector<std::int32_t>> vv{{1}, {2, 3}};
    Level e = Level::High;
    std::vector<Level> es{Level::High, Level::Low};
    eprosima::fastcdr::optional<double> od = 2.5;
    eprosima::fastcdr::optional<std::int32_t> absent;
    eprosima::fastcdr::optional<Inner> oi = Inner{11, 12};
    double last = 3.5;
};

constexpr const char* members =
    "octet o; boolean b; double d; string s; sequence<long> q; sequence<double> r; sequence<octet> u; "
    "sequence<short> h; sequence<string> names; long m[2][3]; Inner i; sequence<Inner> is; Inner ia[2]; "
    "Inner ja[2][1]; sequence<Pair> va; sequence<sequence<long> > vv; "
    "Level e; sequence<Level> es; @optional double od; @optional long absent; @optional Inner oi; double "
    "last;";

constexpr const char* json =
    R"({"o":7,"b":true,"d":-0.5,"s":"hello","q":[1,2,3],"r":[1.5],"u":[1,2,3],"h":[-1],"names":["a",""],)"
    R"("m":[[1,2,3],[4,5,6]],"i":{"a":1,"b":-2},"is":[{"a":3,"b":4},{"a":5,"b":6}],)"
    R"("ia":[{"a":7,"b":8},{"a":9,"b":10}],"ja":[[{"a":1,"b":2}],[{"a":3,"b":4}]],"va":[[1,2],[3,4]],)"
    R"("vv":[[1],[2,3]],"e":"High","es":["High","Low"],"od":2.5,"absent":null,)"
    R"("oi":{"a":11,"b":12},"last":3.5})";

/// What the types under test are.
Extensibility extensibility = Extensibility::Final;

EncodingAlgorithmFlag encodingOf(const Cdr& cdr)
{
    if (cdr.get_cdr_version() == CdrVersion::XCDRv1) {
        return extensibility == Extensibility::Mutable ? EncodingAlgorithmFlag::PL_CDR
                                                       : EncodingAlgorithmFlag::PLAIN_CDR;
    }
    constexpr std::array encodings{EncodingAlgorithmFlag::PLAIN_CDR2, EncodingAlgorithmFlag::DELIMIT_CDR2,
                                   EncodingAlgorithmFlag::PL_CDR2};
    return encodings.at(static_cast<std::size_t>(extensibility));
}

template <class... Values>
void writeMembers(Cdr& cdr, const Values&... values)
{
    Cdr::state state(cdr);
    cdr.begin_serialize_type(state, encodingOf(cdr));
    std::uint32_t id = 0;
    ((cdr << MemberId(id++) << values), ...);
    cdr.end_serialize_type(state);
}

} // namespace

} // namespace plex::test

namespace eprosima::fastcdr
{

template <>
void serialize(Cdr& cdr, const plex::test::Inner& value)
{
    plex::test::writeMembers(cdr, value.a, value.b);
}

template <>
void deserialize(Cdr& cdr, plex::test::Inner& value)
{
    cdr.deserialize_type(plex::test::encodingOf(cdr), [&value](Cdr& stream, const MemberId& member) {
        member.id == 0 ? stream >> value.a : stream >> value.b;
        return member.id == 0;
    });
}

template <>
void serialize(Cdr& cdr, const plex::test::Sample& v)
{
    plex::test::writeMembers(cdr, v.o, v.b, v.d, v.s, v.q, v.r, v.u, v.h, v.names, v.m, v.i, v.is, v.ia, v.ja,
                             v.va, v.vv, v.e, v.es, v.od, v.absent, v.oi, v.last);
}

} // namespace eprosima::fastcdr

namespace plex::test
{

namespace
{

Payload payloadOfFastCdr(CdrVersion version, std::endian order)
{
    Payload memory(2000);
    eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(memory.data()), memory.size());
    Cdr cdr(buffer, order == std::endian::little ? Cdr::LITTLE_ENDIANNESS : Cdr::BIG_ENDIANNESS, version);
    cdr.set_encoding_flag(encodingOf(cdr));
    cdr.serialize_encapsulation();
    cdr << Sample();
    memory.resize(cdr.get_serialized_data_length());
    return memory;
}

struct Form {
    std::string name;
    Extensibility extensibility;
    XcdrVersion version;
    std::endian order;
};

std::ostream& operator<<(std::ostream& out, const Form& form)
{
    return out << form.name;
}

std::vector<Form> forms()
{
    std::vector<Form> result;
    for (const Extensibility kind :
         {Extensibility::Final, Extensibility::Appendable, Extensibility::Mutable}) {
        for (const XcdrVersion version : {XcdrVersion::Xcdr1, XcdrVersion::Xcdr2}) {
            for (const std::endian order : {std::endian::little, std::endian::big}) {
                result.push_back({std::string(toString(kind)) + (version == XcdrVersion::Xcdr1 ? "1" : "2") +
                                      (order == std::endian::little ? "little" : "big"),
                                  kind, version, order});
            }
        }
    }
    return result;
}

class CodecFastCdr : public testing::TestWithParam<Form>
{
};

TEST_P(CodecFastCdr, WritesTheSameBytes)
{
    const auto& [name, kind, version, order] = GetParam();
    extensibility = kind;
    ParseOptions options = optionsWith({});
    options.extensibility = kind;
    const Model model =
        modelOf("enum Level { Low, High }; struct Inner { octet a; long b; }; typedef long Pair[2]; "
                "struct T {" +
                    std::string(members) + "};",
                options);
    const Payload expected =
        payloadOfFastCdr(version == XcdrVersion::Xcdr1 ? CdrVersion::XCDRv1 : CdrVersion::XCDRv2, order);
    EXPECT_EQ(hexOf(payloadFrom(model, json, {version, order, false})), hexOf(expected));
    EXPECT_EQ(jsonOf(model, expected), json);
}

INSTANTIATE_TEST_SUITE_P(Types, CodecFastCdr, testing::ValuesIn(forms()),
                         [](const auto& form) { return form.param.name; });

/// Fast CDR leaves out the delimiter headers of arrays in a sequence, and fails to read them then. The
/// standard has them, and with them Fast CDR does read.
TEST(CodecFastCdrReads, SequencesOfArraysAsTheStandardHasThem)
{
    extensibility = Extensibility::Final;
    const Model model = modelOf("@final struct Inner { octet a; long b; }; typedef Inner Inners[2];"
                                "@final struct T { sequence<Inners> v; };");
    const std::string text = R"({"v":[[{"a":1,"b":2},{"a":3,"b":4}],[{"a":5,"b":6},{"a":7,"b":8}]]})";
    Payload payload = payloadFrom(model, text, {XcdrVersion::Xcdr2, std::endian::little, false});
    eprosima::fastcdr::FastBuffer buffer(reinterpret_cast<char*>(payload.data()), payload.size());
    Cdr cdr(buffer, Cdr::LITTLE_ENDIANNESS, CdrVersion::XCDRv2);
    cdr.read_encapsulation();
    std::vector<std::array<Inner, 2>> read;
    cdr >> read;
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[0][1].b, 4);
    EXPECT_EQ(read[1][0].a, 5);
    EXPECT_EQ(read[1][1].b, 8);
    EXPECT_EQ(cdr.get_serialized_data_length(), payload.size());

    cdr.reset();
    cdr << read;
    cdr.reset();
    EXPECT_THROW(cdr >> read, eprosima::fastcdr::exception::Exception);
}

} // namespace

} // namespace plex::test
