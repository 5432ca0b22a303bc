// SPDX-License-Identifier: Apache-2.0
#include "TopicTypes.hpp"

#include <limits>
#include <type_traits>
#include <utility>

namespace plex::test
{

namespace
{

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Two values and whether they are equal.
template <class Wire>
struct Comparison {
    Wire left;
    Wire right;
    bool equal;
};

template <class Wire, std::size_t count>
void check(const std::array<Comparison<Wire>, count>& comparisons)
{
    for (const auto& [left, right, equal] : comparisons) {
        EXPECT_EQ(left == right, equal);
        EXPECT_EQ(right == left, equal);
        EXPECT_EQ(left != right, !equal);
        EXPECT_EQ(right != left, !equal);
    }
}

} // namespace

template <class Wire>
class WireType : public testing::Test
{
protected:
    static Bits someBits() { return firstBits(0x3FF0123456789ABC, 0xC0FEDCBA98765432); }

    static Bits otherBits() { return firstBits(0x4037A1B2C3D4E5F6, 0x8000000000000001); }

    static Wire with(const Bits& bits)
    {
        Wire value;
        setBits(value, bits);
        return value;
    }

private:
    static Bits firstBits(std::uint64_t first, std::uint64_t second)
    {
        return sizeof(Wire) == 16 ? Bits{first, second} : Bits{first};
    }
};

using WireTypes = testing::Types<AltAz, DomeTemperature>;
TYPED_TEST_SUITE(WireType, WireTypes, );

TYPED_TEST(WireType, IsItsMembersAndNothingElse)
{
    EXPECT_EQ(sizeof(TypeParam), sizeof(double) * bitsOf(TypeParam{}).size());
    EXPECT_FALSE(std::is_polymorphic_v<TypeParam>);
    const auto value = this->with(this->someBits());
    for (std::size_t i = 0; i < bitsOf(value).size(); ++i) {
        const auto* const member = reinterpret_cast<const double*>(&value) + i;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(*member), bitsOf(value)[i]);
    }
}

TYPED_TEST(WireType, StartsAtZero)
{
    EXPECT_EQ(bitsOf(TypeParam{}), Bits(bitsOf(TypeParam{}).size()));
}

TYPED_TEST(WireType, IsCopiedByConstruction)
{
    auto source = this->with(this->someBits());
    const TypeParam copy(source);
    setBits(source, this->otherBits());
    EXPECT_EQ(bitsOf(copy), this->someBits());
}

TYPED_TEST(WireType, IsCopiedByAssignment)
{
    auto source = this->with(this->someBits());
    auto copy = this->with(this->otherBits());
    EXPECT_EQ(&(copy = source), &copy);
    setBits(source, this->otherBits());
    EXPECT_EQ(bitsOf(copy), this->someBits());
}

TYPED_TEST(WireType, IsMovedByConstructionAndAssignment)
{
    auto source = this->with(this->someBits());
    TypeParam moved(std::move(source));
    EXPECT_EQ(bitsOf(moved), this->someBits());
    auto target = this->with(this->otherBits());
    EXPECT_EQ(&(target = std::move(moved)), &target);
    EXPECT_EQ(bitsOf(target), this->someBits());
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<TypeParam>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<TypeParam>);
}

TEST(WireTypeAltAz, IsSetAndReadThroughItsAccessors)
{
    AltAz value;
    value.alt(1.5);
    value.az(-2.5);
    const AltAz& constant = value;
    EXPECT_EQ(constant.alt(), 1.5);
    EXPECT_EQ(constant.az(), -2.5);
}

TEST(WireTypeAltAz, IsChangedThroughItsReferences)
{
    AltAz value;
    double& alt = value.alt();
    double& az = value.az();
    alt = 3.5;
    az = 4.5;
    EXPECT_EQ(value, wireValue(3.5, 4.5));
}

TEST(WireTypeDomeTemperature, IsSetAndReadThroughItsAccessors)
{
    DomeTemperature value;
    value.temp(21.5);
    const DomeTemperature& constant = value;
    EXPECT_EQ(constant.temp(), 21.5);
}

TEST(WireTypeDomeTemperature, IsChangedThroughItsReference)
{
    DomeTemperature value;
    double& temp = value.temp();
    temp = -3.5;
    EXPECT_EQ(value, wireValue(-3.5));
}

TEST(WireTypeAltAz, ComparesMemberByMemberAsNumbersDo)
{
    check<AltAz>(
        std::array<Comparison<AltAz>, 7>{{{wireValue(1, 2), wireValue(1, 2), true},
                                          {wireValue(1, 2), wireValue(1, 3), false},
                                          {wireValue(1, 2), wireValue(3, 2), false},
                                          {wireValue(1, 2), wireValue(2, 1), false},
                                          {wireValue(0.0, -0.0), wireValue(-0.0, 0.0), true},
                                          {wireValue(notANumber, 1), wireValue(notANumber, 1), false},
                                          {wireValue(1, notANumber), wireValue(1, notANumber), false}}});
}

TEST(WireTypeDomeTemperature, ComparesAsNumbersDo)
{
    check<DomeTemperature>(
        std::array<Comparison<DomeTemperature>, 4>{{{wireValue(1), wireValue(1), true},
                                                    {wireValue(1), wireValue(2), false},
                                                    {wireValue(0.0), wireValue(-0.0), true},
                                                    {wireValue(notANumber), wireValue(notANumber), false}}});
}

TYPED_TEST(WireType, HoldingNotANumberDiffersFromItself)
{
    const auto value = this->with(Bits(bitsOf(TypeParam{}).size(), 0x7FF8000000000000));
    EXPECT_FALSE(value == value);
    EXPECT_TRUE(value != value);
}

} // namespace plex::test
