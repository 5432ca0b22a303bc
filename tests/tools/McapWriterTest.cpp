// SPDX-License-Identifier: Apache-2.0
#include "McapFile.hpp"

#include <csignal>
#include <sys/resource.h>

namespace ovra::plex::mcap
{

namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// Files of this process may have so many bytes, for the while.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::uint64_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN); // writing fails instead
        getrlimit(RLIMIT_FSIZE, &before_);
        set({bytes, before_.rlim_max});
    }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    ~FileSizeLimit() { set(before_); }

private:
    static void set(const rlimit& limit) { EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0); }

    rlimit before_{};
};

class McapWriter : public McapTest
{
};

TEST_F(McapWriter, KeepsAllThatIsWritten)
{
    for (const auto compression : {Compression::None, Compression::Lz4, Compression::Zstd}) {
        const auto written = recorded(compression);
        Reader reader(file());
        EXPECT_EQ(reader.header().library, "test");
        EXPECT_FALSE(reader.cutAt());
        ASSERT_THAT(reader.schemas(), SizeIs(1));
        EXPECT_EQ(reader.schemas().at(1).name, "a::B");
        EXPECT_EQ(reader.schemas().at(1).encoding, "omgidl");
        EXPECT_EQ(reader.schemas().at(1).data, "module a { struct B { long c; }; };");
        ASSERT_THAT(reader.channels(), SizeIs(2));
        EXPECT_EQ(reader.channels().at(1).topic, "first");
        EXPECT_EQ(reader.channels().at(1).schema, 1);
        EXPECT_EQ(reader.channels().at(1).metadata.at("key"), "value");
        EXPECT_EQ(reader.channels().at(2).encoding, "cdr");
        EXPECT_EQ(reader.statistics().messages, 100U);
        EXPECT_EQ(reader.statistics().begin, 1000U);
        EXPECT_EQ(reader.statistics().end, 1990U);
        EXPECT_EQ(reader.statistics().messagesOfChannels.at(2), 34U);
        EXPECT_EQ(messagesOf(reader), written);
        reader.rewind();
        EXPECT_EQ(messagesOf(reader), written);
    }
}

TEST_F(McapWriter, KeepsAnEmptyRecording)
{
    Writer(file(), {}).close();
    Reader reader(file());
    EXPECT_FALSE(reader.cutAt());
    EXPECT_EQ(reader.statistics().messages, 0U);
    EXPECT_THAT(messagesOf(reader), IsEmpty());
}

TEST_F(McapWriter, EndsAChunkThatIsLongEnough)
{
    WriterOptions options;
    options.chunkBytes = 10'000;
    options.compression = Compression::None;
    Writer writer(file(), options);
    const auto channel = writer.add(Channel{0, 0, "topic", "cdr", {}});
    const auto before = writer.size();
    for (std::uint64_t i = 0; i < 9; ++i) {
        write(writer, {channel, 0, i, i, std::string(1000, 'x')});
    }
    EXPECT_EQ(writer.size(), before);
    write(writer, {channel, 0, 9, 9, std::string(1000, 'x')});
    EXPECT_GT(writer.size(), before + 10'000);
    Reader reader(file()); // as after a kill
    EXPECT_THAT(messagesOf(reader), SizeIs(10));
}

TEST_F(McapWriter, KeepsLargeMessages)
{
    const std::string large(20U << 20U, 'x');
    for (const auto compression : {Compression::None, Compression::Lz4, Compression::Zstd}) {
        WriterOptions options;
        options.compression = compression;
        options.overwrites = true;
        Writer writer(file(), options);
        write(writer, {writer.add(Channel{0, 0, "topic", "cdr", {}}), 0, 1, 1, large});
        writer.close();
        Reader reader(file());
        const auto messages = messagesOf(reader);
        ASSERT_THAT(messages, SizeIs(1));
        EXPECT_EQ(messages.front().data == large, true);
    }
}

TEST_F(McapWriter, OverwritesOnlyWhatItIsToldTo)
{
    setContent("precious");
    EXPECT_THROW(Writer(file(), {}), FileError);
    EXPECT_EQ(content(), "precious");
    WriterOptions options;
    options.overwrites = true;
    Writer(file(), options).close();
    EXPECT_THAT(content(), HasSubstr("MCAP"));
}

TEST_F(McapWriter, RefusesMessagesWithoutAChannel)
{
    Writer writer(file(), {});
    EXPECT_THROW(write(writer, {1, 0, 0, 0, ""}), std::invalid_argument);
    EXPECT_THROW(write(writer, {0, 0, 0, 0, ""}), std::invalid_argument);
}

TEST_F(McapWriter, LeavesAReadableFileOnAFullDisk)
{
    const FileSizeLimit limit(20'000);
    WriterOptions options;
    options.compression = Compression::None;
    options.chunkBytes = 3000;
    Writer writer(file(), options);
    const auto channel = writer.add(Channel{0, 0, "topic", "cdr", {}});
    std::uint64_t written = 0;
    try {
        for (; written < 1000; ++written) {
            write(writer, {channel, 0, written, written, std::string(100, 'x')});
        }
        FAIL() << "the disk is not full";
    } catch (const FileError& error) {
        EXPECT_THAT(error.what(), HasSubstr("recording.mcap\": File too large"));
    }
    EXPECT_EQ(content().size(), writer.size()); // no piece of a chunk
    Reader reader(file());
    EXPECT_EQ(reader.cutAt(), content().size());
    EXPECT_GT(written, 100U);
    const auto lost = written + 1 - messagesOf(reader).size();
    EXPECT_LE(lost, 3000U / 131U + 1); // those of the chunk that found no room
}

} // namespace

} // namespace ovra::plex::mcap
