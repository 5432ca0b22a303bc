// SPDX-License-Identifier: Apache-2.0
#include "Check.hpp"
#include "Target.hpp"

#include <plex/idl/Codec.hpp>
#include <plex/idl/Parse.hpp>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

namespace plex::fuzz
{

namespace
{

using namespace ovra::plex::idl;

/// A type of each construct, and one of all of them in each extensibility.
constexpr const char* definitions = R"(
    enum Level { LOW, @value(5) @default_literal HIGH };
    @bit_bound(8) enum Small { A, B };
    bitmask Flags { F0, @position(10) F10 };
    @final struct Empty {};
    @final struct Fixed { octet o; double d; };
    @appendable struct Open { octet o; string<8> s; };
    @mutable struct Loose { @id(3) long l; @id(0x4000) @optional string s; @must_understand octet o; };
    typedef Fixed Row[2];
    @final struct Node;
    typedef sequence<Node> Nodes;
    @final struct Node { octet o; Nodes next; };
    @final union ByLevel switch (Level) { case LOW: Fixed f; case HIGH: string s; };
    @appendable union ByLong switch (long) { case 1: case -2: sequence<short, 3> q; default: boolean b; };
    @mutable union ByChar switch (char) { case 'a': @id(10) long l; case 'b': @id(20) Open o; };
    @final struct All {
        boolean b; char c; wchar w; int8 i8; uint8 u8; short s; unsigned short us; long l; unsigned long ul;
        long long ll; unsigned long long ull; float f; double d; string text; Level level; Small small;
        Flags flags; sequence<octet> octets; sequence<double, 4> doubles; sequence<string> texts;
        sequence<sequence<long> > lists; long matrix[2][3]; Row rows[2]; sequence<Row> rowList; Node node;
        sequence<Empty> empties; Fixed inner; Open open; Loose loose; ByLevel byLevel; ByLong byLong;
        ByChar byChar; @optional double od; @optional Open oo; sequence<Level> levels; Small smalls[3];
    };
    @final struct Base { @key long id; };
    @final struct Derived : Base { string<4> name; All all; };
    @appendable struct AllOpen { @key octet uuid[17]; All all; };
    @mutable struct AllLoose { @key Open open; @optional Loose loose; ByChar byChar; sequence<Fixed> list;
        string<3> text; @id(0x10000) ByLong byLong; float f; };
)";

Model modelOf(const std::string& text)
{
    ParseResult result = parseText(text, "types.idl");
    if (!result.model) {
        std::cerr << toString(result.diagnostics);
        std::abort();
    }
    return std::move(*result.model);
}

const Model& model()
{
    static const Model result = modelOf(definitions);
    return result;
}

const Type& typeFor(std::uint8_t choice)
{
    const auto& types = model().types;
    return *types[choice % types.size()];
}

/// What was read from a payload can be written, and is then read as the same.
void checkWriting(const Type& type, const Datum& value, const CodecOptions& options)
{
    const std::string json = toJson(type, value);
    for (const XcdrVersion version : {XcdrVersion::Xcdr1, XcdrVersion::Xcdr2}) {
        for (const std::endian order : {std::endian::little, std::endian::big}) {
            const auto payload = encode(type, value, {version, order, order == std::endian::big}, options);
            check(toJson(type, decode(type, payload, options)) == json, "a payload keeps the value");
        }
        keyHash(type, value, version);
    }
    check(toJson(type, fromJson(type, json, options)) == json, "JSON keeps the value");
}

} // namespace

/// The first byte chooses the type, the second one the options; the rest is a payload, or JSON.
void run(std::span<const std::uint8_t> input)
{
    if (input.size() < 2) {
        return;
    }
    const Type& type = typeFor(input[0]);
    const CodecOptions options{(input[1] & 1U) != 0, (input[1] & 2U) != 0, (input[1] & 4U) != 0};
    const auto rest = input.subspan(2);
    std::optional<Datum> value;
    try {
        value = (input[1] & 8U) == 0
                    ? decode(type, rest, options)
                    : fromJson(type, {reinterpret_cast<const char*>(rest.data()), rest.size()}, options);
    } catch (const CodecError& error) {
        check(!error.offset() || *error.offset() <= rest.size(), "an error has a place in the payload");
    }
    if (value) {
        checkWriting(type, *value, options);
    }
}

} // namespace plex::fuzz
