// SPDX-License-Identifier: Apache-2.0
// The hashes of keys are those of a codec that was written apart.
#include "Payloads.hpp"

#include <gtest/gtest.h>

#include <array>
#include <dds/ByPartsAdapter.hpp>
#include <dds/ByPlaceAdapter.hpp>
#include <dds/ByTextAdapter.hpp>

namespace plex::test
{

namespace
{

namespace adapters = generated::ddsimpl::instances;

using Hash = std::array<std::uint8_t, 16>;

template <class Adapter>
Hash hashOf(Adapter& value)
{
    typename Adapter::PubSubType type;
    ovra::plex::fastdds::InstanceHandle_t handle;
    EXPECT_TRUE(type.getKey(&value.wire(), &handle, false));
    Hash hash{};
    std::copy_n(&handle.value[0], hash.size(), hash.begin());
    return hash;
}

template <class Adapter>
Hash hashByCodec(const std::string& name, const Adapter& value)
{
    static const auto model = modelOfFile("instances.idl");
    const auto& type = *model.findType("instances::" + name);
    const auto payload = encoded<Adapter>(value.wire(), eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION);
    return keyHash(type, ovra::plex::idl::decode(type, payload)).value();
}

TEST(KeyHashes, OfTextsAreSums)
{
    for (const std::size_t size : {0U, 1U, 3U, 11U, 12U, 1000U}) {
        adapters::ByText value;
        value.setName(std::string(size, 'x'));
        value.setValue(1);
        EXPECT_EQ(hashOf(value), hashByCodec("ByText", value)) << size;
    }
}

TEST(KeyHashes, OfShortKeysAreTheKeys)
{
    adapters::ByPlace value;
    value.setPlace({0x01020304, 0x0506, "no part of it"});
    EXPECT_EQ(hashOf(value), (Hash{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(hashOf(value), hashByCodec("ByPlace", value));
}

/// Each member has its part in the hash.
TEST(KeyHashes, OfSeveralMembersAreByTheirIds)
{
    adapters::ByParts value;
    std::vector<Hash> hashes;
    const auto check = [&] {
        EXPECT_EQ(hashOf(value), hashByCodec("ByParts", value));
        EXPECT_EQ(std::ranges::count(hashes, hashOf(value)), 0);
        hashes.push_back(hashOf(value));
    };
    check();
    value.setRow({1, -2});
    check();
    value.setSite(-3);
    check();
    value.setPlace({4, 5, ""});
    check();
    value.setLabel("12345678");
    check();
    value.editChoice().text("abc");
    check();
    value.setTag(std::vector<std::uint8_t>{1, 2, 3});
    check();
    value.setColors({instances::Color::GREEN, instances::Color::RED});
    check();
    value.setFlag(true);
    check();
    value.setLevel(0.5F);
    check();
    value.setValue(7);
    EXPECT_EQ(hashOf(value), hashes.back()) << "the value is no part of it";
}

} // namespace

} // namespace plex::test
