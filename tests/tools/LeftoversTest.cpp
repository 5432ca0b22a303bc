// SPDX-License-Identifier: Apache-2.0
#include "../../tools/plex/Leftovers.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

namespace plex::test
{

using namespace ovra::plex::tool;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

/// A folder that stands for shared memory.
class Leftovers : public testing::Test
{
protected:
    Leftovers()
    {
        if (mkdtemp(directory_.data()) == nullptr) {
            throw std::runtime_error("no folder can be made");
        }
    }

    ~Leftovers() override { std::filesystem::remove_all(directory_); }

    Leftovers(const Leftovers&) = delete;
    Leftovers& operator=(const Leftovers&) = delete;

    std::string path(const std::string& name) const { return directory_ + "/" + name; }

    void make(std::initializer_list<const char*> names) const
    {
        for (const auto* const name : names) {
            std::ofstream(path(name)) << "contents";
        }
    }

    std::vector<SharedFiles> look() const { return sharedFilesIn(directory_); }

    const std::string& directory() const { return directory_; }

private:
    std::string directory_ = testing::TempDir() + "plex-leftovers-XXXXXX";
};

TEST_F(Leftovers, FilesThatBelongTogetherAreOne)
{
    make({"fastdds_12ab", "fastdds_12ab_el", "fastdds_port7411", "fastdds_port7411_el",
          "sem.fastdds_port7411_mutex", "fastrtps_34cd", "fast_datasharing_01.0f_0.0.1.3", "somebody_else",
          "sem.somebody_else"});
    std::filesystem::create_directory(path("fastdds_folder"));
    EXPECT_THAT(look(),
                ElementsAre(Field(&SharedFiles::files, ElementsAre("fast_datasharing_01.0f_0.0.1.3")),
                            Field(&SharedFiles::files, ElementsAre("fastdds_12ab", "fastdds_12ab_el")),
                            Field(&SharedFiles::files, ElementsAre("fastdds_port7411", "fastdds_port7411_el",
                                                                   "sem.fastdds_port7411_mutex")),
                            Field(&SharedFiles::files, ElementsAre("fastrtps_34cd"))));
    EXPECT_EQ(look().at(0).bytes, 4096U);
}

TEST_F(Leftovers, WhatIsLockedIsHeld)
{
    make({"fastdds_12ab", "fastdds_12ab_el"});
    EXPECT_THAT(look(), ElementsAre(Field(&SharedFiles::holder, Holder::Nobody)));
    const int lock = open(path("fastdds_12ab_el").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_THAT(look(), ElementsAre(Field(&SharedFiles::holder, Holder::Living)));
    close(lock);
    EXPECT_THAT(look(), ElementsAre(Field(&SharedFiles::holder, Holder::Nobody)));
}

TEST_F(Leftovers, WhatIsMappedIsHeld)
{
    make({"fast_datasharing_1"});
    const int file = open(path("fast_datasharing_1").c_str(), O_RDWR | O_CLOEXEC);
    void* const memory = mmap(nullptr, 8, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ASSERT_NE(memory, MAP_FAILED);
    close(file);
    EXPECT_THAT(look(), ElementsAre(Field(&SharedFiles::holder, Holder::Living)));
    munmap(memory, 8);
    EXPECT_THAT(look(), ElementsAre(Field(&SharedFiles::holder, Holder::Nobody)));
}

TEST_F(Leftovers, AreWhatNobodyHeldAtEitherLook)
{
    const SharedFiles free{"free", {"free"}, 1, Holder::Nobody};
    const SharedFiles young{"young", {"young"}, 1, Holder::Nobody};
    const SharedFiles used{"used", {"used"}, 1, Holder::Living};
    SharedFiles released = used;
    released.holder = Holder::Nobody;
    const SharedFiles unknown{"unknown", {"unknown"}, 1, Holder::Unknown};
    EXPECT_THAT(leftoversOf({free, used, unknown}, {free, released, unknown, young}),
                ElementsAre(Field(&SharedFiles::name, "free")));
}

TEST_F(Leftovers, AreRemovedWithTheirLocks)
{
    make({"fastdds_12ab", "fastdds_12ab_el", "fastdds_34cd"});
    const auto all = look();
    EXPECT_THAT(remove({all.at(0)}, directory()), IsEmpty());
    EXPECT_THAT(look(), ElementsAre(Field(&SharedFiles::name, "fastdds_34cd")));
    EXPECT_THAT(remove({all.at(0)}, directory()), IsEmpty()); // gone is as good
}

TEST_F(Leftovers, ThatCannotBeRemovedAreNamed)
{
    std::filesystem::create_directory(path("fastdds_folder")); // which unlink() refuses
    const SharedFiles stubborn{"fastdds_folder", {"fastdds_folder"}, 0, Holder::Nobody};
    EXPECT_THAT(remove({stubborn}, directory()), ElementsAre(Field(&SharedFiles::name, "fastdds_folder")));
}

TEST_F(Leftovers, NoFolderHoldsNone)
{
    EXPECT_THAT(sharedFilesIn(path("none")), IsEmpty());
}

} // namespace plex::test
