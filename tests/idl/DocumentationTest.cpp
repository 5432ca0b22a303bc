// SPDX-License-Identifier: Apache-2.0
#include "Idl.hpp"

namespace plex::test
{

namespace
{

TEST(Documentation, IsKeptWithWhatItIsAbout)
{
    const Model model = modelOf(R"(
/** The dome
  * of the telescope.
  *
  *   - a list
  */
module dome { ///< and more
  /// Where it points.
  /// In degrees.
  @final struct AltAz { ///< sky
    /// before
    @unit("deg") double alt; ///< behind
    // not this
    double az;
    @optional /// between
    double rate, other; /**< both */
  };
  enum Side {
    EAST, ///< morning
    /// evening
    WEST  ///< late
  };
  /// none
  const long N = 1; ///< at least
  //! an alias
  typedef long Id;
  union U switch (long) {
    /// first
    case 1: long a; ///< one
    case 2: /// second
      long b;
  };
};
)");
    const auto& type = typeIn<StructType>(model, "dome::AltAz");
    EXPECT_EQ(type.module->documentation, "The dome\nof the telescope.\n\n  - a list\nand more");
    EXPECT_EQ(type.documentation, "Where it points.\nIn degrees.\nsky");
    EXPECT_EQ(memberOf(type, "alt").documentation, "before\nbehind");
    EXPECT_EQ(memberOf(type, "az").documentation, "");
    EXPECT_EQ(memberOf(type, "rate").documentation, "between\nboth");
    EXPECT_EQ(memberOf(type, "other").documentation, "between\nboth");
    const auto& side = typeIn<EnumType>(model, "dome::Side");
    EXPECT_EQ(side.enumerators[0].documentation, "morning");
    EXPECT_EQ(side.enumerators[1].documentation, "evening\nlate");
    EXPECT_EQ(model.findConstant("dome::N")->documentation, "none\nat least");
    EXPECT_EQ(model.findType("dome::Id")->documentation, "an alias");
    const auto& choice = typeIn<UnionType>(model, "dome::U");
    EXPECT_EQ(choice.cases[0].documentation, "first\none");
    EXPECT_EQ(choice.cases[1].documentation, "second");
}

TEST(Locations, AreThoseOfTheNames)
{
    const Model model =
        modelOf("module m {\n  struct S {\n    @key\n    long first,\n      second;\n  };\n};\n");
    const auto& type = typeIn<StructType>(model, "m::S");
    EXPECT_EQ(type.location.line, 2U);
    EXPECT_EQ(type.location.column, 10U);
    EXPECT_EQ(type.members[1].location.line, 5U);
    EXPECT_EQ(type.members[1].location.column, 7U);
}

} // namespace

} // namespace plex::test
