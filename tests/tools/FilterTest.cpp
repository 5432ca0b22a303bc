// SPDX-License-Identifier: Apache-2.0
#include <plex/idl/Parse.hpp>

#include <gmock/gmock.h>

#include <stdexcept>
#include <tools/plex/Failure.hpp>
#include <tools/plex/Filter.hpp>

namespace ovra::plex::tool
{

namespace
{

/// Conditions on one value that has members of each kind.
class FilterTest : public testing::Test
{
protected:
    const idl::StructType& type() const { return *idl::as<idl::StructType>(*model_.findType("m::Value")); }

    bool holds(const std::string& condition) const { return parseFilter(condition, type())(value_); }

    std::string refusal(const std::string& condition) const
    {
        try {
            parseFilter(condition, type());
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code(), ExitCode::Usage);
            return failure.what();
        }
        return "none";
    }

private:
    const idl::Model model_ = *idl::parseText(R"(module m {
        enum Motion { STOPPED, OPENING };
        struct Limits { double lower; double upper; };
        union Choice switch (boolean) { case TRUE: long number; };
        struct Value {
            long long big; unsigned long long huge; double real; boolean flag; string text; Motion motion;
            Limits limits; sequence<long> list; @optional string fault; Choice choice; long double_[2][2]; };
    };)",
                                              "test.idl")
                                   .model;
    const Json value_ =
        Json::parse(R"({"big": -9223372036854775808, "huge": 18446744073709551615, "real": 0.5,
        "flag": true, "text": "a b", "motion": "OPENING", "limits": {"lower": "-Infinity", "upper": "NaN"},
        "list": [1, 2, 3], "fault": null, "choice": {"discriminator": true, "member": 7}, "double_": [[1, 2], [3, 4]]})");
};

TEST_F(FilterTest, ComparesNumbersExactly)
{
    EXPECT_TRUE(holds("big == -9223372036854775808"));
    EXPECT_FALSE(holds("big == -9223372036854775807"));
    EXPECT_TRUE(holds("huge == 18446744073709551615"));
    EXPECT_FALSE(holds("huge == 18446744073709551614"));
    EXPECT_TRUE(holds("huge > big"));
    EXPECT_FALSE(holds("huge < big"));
    EXPECT_TRUE(holds("real = 0.5"));
    EXPECT_TRUE(holds("real >= 5e-1 and real <= +0.5"));
    EXPECT_TRUE(holds("0.4 < real"));
    EXPECT_TRUE(holds("real != 1"));
    EXPECT_FALSE(holds("real != 0.5"));
}

TEST_F(FilterTest, KnowsFloatsThatAreNoNumbers)
{
    EXPECT_TRUE(holds("limits.lower < -1e308"));
    EXPECT_FALSE(holds("limits.upper < 0"));
    EXPECT_FALSE(holds("limits.upper >= 0"));
    EXPECT_TRUE(holds("limits.upper != 0"));
}

TEST_F(FilterTest, ComparesTextsAndNamesOfEnumerators)
{
    EXPECT_TRUE(holds("text == 'a b'"));
    EXPECT_TRUE(holds("text == \"a b\""));
    EXPECT_TRUE(holds("text < 'b'"));
    EXPECT_FALSE(holds("text == 'a'"));
    EXPECT_TRUE(holds("motion == OPENING"));
    EXPECT_TRUE(holds("STOPPED != motion"));
    EXPECT_TRUE(holds("motion == 'OPENING'"));
}

TEST_F(FilterTest, FollowsPaths)
{
    EXPECT_TRUE(holds("list[2] == 3"));
    EXPECT_FALSE(holds("list[3] == 3"));
    EXPECT_FALSE(holds("list[3] != 3")); // it is not there
    EXPECT_TRUE(holds("double_[1][0] == 3"));
    EXPECT_TRUE(holds("choice.member == 7"));
    EXPECT_FALSE(holds("fault == 'hot'"));
}

TEST_F(FilterTest, TakesAMemberAloneForWhetherItIsThereAndTrue)
{
    EXPECT_TRUE(holds("flag"));
    EXPECT_TRUE(holds("text"));
    EXPECT_FALSE(holds("fault"));
    EXPECT_TRUE(holds("not fault"));
    EXPECT_TRUE(holds("flag == true"));
    EXPECT_FALSE(holds("flag == false"));
}

TEST_F(FilterTest, BindsNotBeforeAndBeforeOr)
{
    EXPECT_TRUE(holds("flag or flag and fault"));
    EXPECT_FALSE(holds("(flag or flag) and fault"));
    EXPECT_TRUE(holds("not fault and flag"));
    EXPECT_FALSE(holds("not (not fault and flag)"));
    EXPECT_TRUE(holds("!fault&&(flag||fault)"));
}

TEST_F(FilterTest, DoesNotHoldForValuesOfOtherKinds)
{
    EXPECT_FALSE(holds("text == 1"));
    EXPECT_TRUE(holds("text != 1"));
    EXPECT_FALSE(holds("text < 1"));
    EXPECT_FALSE(holds("flag == 'true'"));
}

TEST_F(FilterTest, SaysWhatIsWrong)
{
    EXPECT_THAT(refusal("rael > 1"),
                testing::HasSubstr("m::Value has no member \"rael\", did you mean \"real\"?"));
    EXPECT_THAT(refusal("limits.uper > 1"), testing::HasSubstr("m::Limits has no member \"uper\""));
    EXPECT_THAT(refusal("motion == OPENED"), testing::HasSubstr("no member \"OPENED\""));
    EXPECT_THAT(refusal("real[0] > 1"), testing::HasSubstr("has no elements"));
    EXPECT_THAT(refusal("list.x > 1"), testing::HasSubstr("has no members"));
    EXPECT_THAT(refusal("list[x] > 1"), testing::HasSubstr("names no member"));
    EXPECT_THAT(refusal(""), testing::HasSubstr("missing"));
    EXPECT_THAT(refusal("real >"), testing::HasSubstr("missing"));
    EXPECT_THAT(refusal("(flag"), testing::HasSubstr("\")\" is missing"));
    EXPECT_THAT(refusal("flag)"), testing::HasSubstr("\")\" is not expected"));
    EXPECT_THAT(refusal("real > 1.2.3"), testing::HasSubstr("\"1.2.3\" is no number"));
    EXPECT_THAT(refusal("text == 'a"), testing::HasSubstr("does not end"));
    EXPECT_THAT(refusal("real # 1"), testing::HasSubstr("is not expected"));
    EXPECT_THAT(refusal(std::string(100'000, '(')), testing::HasSubstr("nested too deep"));
    EXPECT_THAT(refusal(std::string(100'000, '!')), testing::HasSubstr("nested too deep"));
}

} // namespace

} // namespace ovra::plex::tool
