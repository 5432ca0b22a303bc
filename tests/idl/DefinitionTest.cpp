// SPDX-License-Identifier: Apache-2.0
// From types to the text of their definition and back.
#include "Idl.hpp"

#include <plex/idl/Definition.hpp>
#include <plex/idl/Json.hpp>

#include <filesystem>
#include <nlohmann/json.hpp>

namespace plex::test
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// What a text need not keep: where something stands, and how that was said.
void removeWording(json& value)
{
    if (value.is_object()) {
        for (const char* const key : {"file", "line", "column", "documentation", "annotations", "included"}) {
            value.erase(key);
        }
    }
    if (value.is_structured()) {
        for (json& part : value) {
            removeWording(part);
        }
    }
}

void addTypes(const json& declarations, std::map<std::string, json>& types)
{
    for (const json& declaration : declarations) {
        if (declaration.at("kind") == "module") {
            addTypes(declaration.at("declarations"), types);
        } else if (declaration.at("kind") != "const") {
            types[declaration.at("scoped_name")] = declaration;
        }
    }
}

/// What a model says of each type.
std::map<std::string, json> typesOf(const Model& model)
{
    json all = json::parse(toJson(model));
    removeWording(all);
    std::map<std::string, json> types;
    addTypes(all.at("declarations"), types);
    return types;
}

/// All types, and each by itself, come out as they went in.
void expectSameTypes(const Model& model)
{
    const auto expected = typesOf(model);
    EXPECT_EQ(typesOf(modelOf(definitionOf(model, model.types))), expected);
    for (const NamedType* const type : model.types) {
        for (const auto& [name, found] : typesOf(modelOf(definitionOf(model, {type})))) {
            EXPECT_EQ(found, expected.at(name)) << definitionOf(model, {type});
        }
    }
}

class DefinitionOfFile : public testing::TestWithParam<fs::path>
{
};

TEST_P(DefinitionOfFile, MakesTheSameTypes)
{
    const ParseResult result = parseFile(GetParam().string());
    ASSERT_TRUE(result.model.has_value());
    expectSameTypes(*result.model);
}

std::vector<fs::path> acceptedFiles()
{
    std::vector<fs::path> files;
    for (const fs::path folder : {PLEX_TEST_IDL_DIR "/accepted", PLEX_TEST_IDL_DIR "/../generated"}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".idl") {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    return files;
}

INSTANTIATE_TEST_SUITE_P(Idl, DefinitionOfFile, testing::ValuesIn(acceptedFiles()),
                         [](const auto& file) { return file.param.stem().string(); });

TEST(Definition, KeepsValuesThatAreHardToWrite)
{
    expectSameTypes(modelOf(R"(
struct T {
    @default(-9223372036854775808) long long a; @default(18446744073709551615) unsigned long long b;
    @default('\xe4') char c; @default('\'') char d; @default(L'\u00e4') wchar e; @default("\"\xff\\\n\x019") string f;
    @default(L"äö?\"") wstring g; @default(1e300) double h; @default(0.1) float i; @default(-0.0) double j;
    @default(5e-324) double k; @unit("\u00b0 \"\\") @range(min = -1e-9, max = 1) double l; @default(FALSE) boolean m;
};)"));
}

TEST(Definition, KeepsNamesThatAreKeywords)
{
    expectSameTypes(modelOf(R"(
module _module { module _struct { enum _enum { _case, _TRUE }; struct __x { @default(_case) _enum _union; }; }; };
@autoid(HASH) struct _Sequence { _module::_struct::__x _string, _long[2]; sequence<_module::_struct::__x> _any; };
union _octet switch (_module::_struct::_enum) { case _case: long _default; case _TRUE: @id(77) @default(3) short _map; };
)"));
}

TEST(Definition, HoldsWhatATypeIsMadeOfAndNothingElse)
{
    const Model model = modelOf(R"(
module a { struct Unused { long l; }; enum Kind { NONE, SOME }; struct Base { @key Kind kind; }; };
module b { typedef sequence<a::Base, 3> Bases; };
module a { @mutable struct T { /** not kept */ b::Bases bases; }; };
)");
    EXPECT_EQ(definitionOf(model, {model.findType("a::T")}), R"(module a {
@appendable @bit_bound(32) enum Kind {
    @default_literal @value(0) NONE,
    @value(1) SOME
};
@appendable struct Base {
    @key @id(0) ::a::Kind kind;
};
};
module b {
typedef sequence<::a::Base, 3> Bases;
};
module a {
@mutable struct T {
    @id(0) ::b::Bases bases;
};
};
)");
}

TEST(Definition, OfNoTypeIsEmpty)
{
    EXPECT_EQ(definitionOf(modelOf("struct T { long l; };"), {}), "");
}

} // namespace

} // namespace plex::test
