// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tools/plex/Modules.hpp>
#include <tools/plex/TypeSource.hpp>
#include <unistd.h>

namespace ovra::plex::tool
{

namespace
{

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A folder of its own, which goes.
class ModulesTest : public testing::Test
{
protected:
    ~ModulesTest() override { fs::remove_all(folder_); }

    void write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }

    static std::string module()
    {
        std::ifstream file(PLEX_TEST_MODULE, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const fs::path folder_ = [] {
        std::string pattern = fs::temp_directory_path() / "plex-modules-XXXXXX";
        return fs::path(mkdtemp(pattern.data()));
    }();
};

TEST_F(ModulesTest, NamesWhatALibraryDescribesWithoutOpeningIt)
{
    EXPECT_THAT(descriptionSymbols(PLEX_TEST_MODULE),
                UnorderedElementsAre("generated_dds_Description_vexstubif_AltAz",
                                     "generated_dds_Description_vexstubif_DomeTemperature"));
}

TEST_F(ModulesTest, BelievesNothingThatAFileSays)
{
    EXPECT_THAT(descriptionSymbols(folder_ / "missing.so"), IsEmpty());
    EXPECT_THAT(descriptionSymbols(folder_), IsEmpty());
    write("text.so", "/* GNU ld script */");
    EXPECT_THAT(descriptionSymbols(folder_ / "text.so"), IsEmpty());
    const auto whole = module();
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{20}, std::size_t{64}, whole.size() / 2, whole.size() - 100}) {
        write("truncated.so", whole.substr(0, length));
        descriptionSymbols(folder_ / "truncated.so"); // ends, and reads nothing beyond the file
    }
    auto spoilt = whole.substr(0, 4096);
    for (std::size_t i = 16; i < 64; ++i) { // numbers and places of the header
        auto copy = spoilt;
        copy[i] = '\xff';
        write("spoilt.so", copy);
        descriptionSymbols(folder_ / "spoilt.so");
    }
}

TEST_F(ModulesTest, FindsTypesByBothNames)
{
    TypeOptions options;
    options.modulePath = {fs::path(PLEX_TEST_MODULE).parent_path()};
    for (const char* const name : {"generated::dds_::vexstubif::AltAz", "vexstubif::AltAz"}) {
        const auto type = findType(name, options);
        ASSERT_TRUE(type) << name;
        EXPECT_EQ(type->ddsName, "generated::dds_::vexstubif::AltAz");
        EXPECT_EQ(type->type->scopedName, "vexstubif::AltAz");
        EXPECT_EQ(type->type->members.size(), 2U);
    }
    EXPECT_FALSE(findType("vexstubif::Nothing", options));
}

TEST_F(ModulesTest, PassesOverLibrariesThatCanNotBeOpened)
{
    write("libplex-dds-vexstubif.so", module()); // what it needs is not beside it
    TypeOptions options;
    options.modulePath = {folder_, fs::path(PLEX_TEST_MODULE).parent_path()};
    EXPECT_TRUE(findType("vexstubif::AltAz", options));
}

TEST_F(ModulesTest, LooksInEachFolderOnce)
{
    const auto directories = moduleDirectories({folder_, folder_ / ".", "/usr/lib"});
    EXPECT_EQ(directories.front(), fs::canonical(folder_));
    EXPECT_EQ(std::ranges::count(directories, fs::canonical(folder_)), 1);
    EXPECT_EQ(std::ranges::count(directories, fs::path("/usr/lib")), 1);
}

} // namespace

} // namespace ovra::plex::tool
