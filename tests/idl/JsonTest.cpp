// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

#include <plex/idl/Json.hpp>

namespace plex::test
{

namespace
{

TEST(Json, DescribesTheModel)
{
    const Model model = modelOf("/// \"Sky\"\n@final struct S { @key @unit(\"\u00b0\") @default(0.5) double "
                                "a; };\nconst char C = '\\0';\n");
    EXPECT_EQ(toJson(model), R"({
  "files": [
    {
      "path": "test.idl"
    }
  ],
  "declarations": [
    {
      "kind": "struct",
      "scoped_name": "S",
      "name": "S",
      "file": "test.idl",
      "line": 2,
      "column": 15,
      "documentation": "\"Sky\"",
      "annotations": [
        {
          "name": "final"
        }
      ],
      "extensibility": "final",
      "has_key": true,
      "members": [
        {
          "name": "a",
          "file": "test.idl",
          "line": 2,
          "column": 56,
          "annotations": [
            {
              "name": "key"
            },
            {
              "name": "unit",
              "parameters": [
                {
                  "text": "\")"
                             "\u00b0"
                             R"(\""
                }
              ]
            },
            {
              "name": "default",
              "parameters": [
                {
                  "text": "0.5"
                }
              ]
            }
          ],
          "type": "double",
          "id": 0,
          "key": true,
          "default": 0.5,
          "unit": ")"
                             "\u00b0"
                             R"("
        }
      ]
    },
    {
      "kind": "const",
      "scoped_name": "C",
      "name": "C",
      "file": "test.idl",
      "line": 3,
      "column": 12,
      "type": "char",
      "value": "'\\000'"
    }
  ]
}
)");
}

TEST(Json, NamesEachKindOfDeclaration)
{
    const Model model =
        modelOf("module m { enum E { A }; bitmask B { F }; bitset T { bitfield<3> a; }; typedef long D;"
                "union U switch (E) { case A: long a; }; struct S { U u; }; const E C = A; };");
    const std::string json = toJson(model);
    for (const auto* const kind :
         {"module", "enum", "bitmask", "bitset", "typedef", "union", "struct", "const"}) {
        EXPECT_THAT(json, testing::HasSubstr("\"kind\": \"" + std::string(kind) + "\"")) << kind;
    }
    EXPECT_EQ(std::ranges::count(json, '{'), std::ranges::count(json, '}'));
}

} // namespace

} // namespace plex::test
