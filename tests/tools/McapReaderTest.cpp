// SPDX-License-Identifier: Apache-2.0
#include "McapFile.hpp"

#include <algorithm>

namespace ovra::plex::mcap
{

namespace
{

using testing::HasSubstr;
using testing::SizeIs;

class McapReader : public McapTest
{
protected:
    void expectComplaint(const std::string& bytes, const std::string& text) const
    {
        setContent(bytes);
        EXPECT_THAT(complaint(), HasSubstr(text));
    }
};

TEST_F(McapReader, ReadsFilesWithoutChunksAndSummary)
{
    setContent(plainFile(plainChannel() + plainMessage(5, "late") + record(0x0C, "skipped") +
                         plainMessage(3, "early") + plainMessage(4, "")));
    Reader reader(file());
    EXPECT_EQ(reader.header().library, "by hand");
    EXPECT_FALSE(reader.cutAt());
    EXPECT_EQ(reader.statistics().messages, 3U);
    EXPECT_EQ(reader.statistics().begin, 3U);
    EXPECT_EQ(reader.statistics().end, 5U);
    EXPECT_EQ(messagesOf(reader),
              (std::vector<Kept>{{1, 7, 3, 3, "early"}, {1, 7, 4, 4, ""}, {1, 7, 5, 5, "late"}}));
}

TEST_F(McapReader, PassesOverWhatItHasNoUseFor)
{
    setContent(plainFile(record(0x09, std::string(1000, 'a')) + plainChannel() + record(0x90, "private") +
                         record(0x33, "of a later version") +
                         plainChunk(record(0x91, "") + plainMessage(1, "x")) + record(0x0C, "metadata")));
    Reader reader(file());
    EXPECT_THAT(messagesOf(reader), SizeIs(1));
}

TEST_F(McapReader, PutsMessagesOfOverlappingChunksInOrder)
{
    setContent(plainFile(plainChannel() + plainChunk(plainMessage(1, "") + plainMessage(9, "")) +
                         plainChunk(plainMessage(8, "") + plainMessage(2, "")) + plainMessage(5, "") +
                         plainChunk(plainMessage(20, ""))));
    Reader reader(file());
    std::vector<std::uint64_t> times;
    for (const auto& message : messagesOf(reader)) {
        times.push_back(message.logTime);
    }
    EXPECT_EQ(times, (std::vector<std::uint64_t>{1, 2, 5, 8, 9, 20}));
}

TEST_F(McapReader, ReadsUpToWhereAFileWasCutOff)
{
    const auto written = recorded(Compression::Zstd, 30, 10);
    const auto whole = content();
    std::size_t before = 0;
    for (std::size_t length = 1; length < whole.size(); ++length) {
        setContent(whole.substr(0, length));
        Reader reader(file());
        ASSERT_TRUE(reader.cutAt()) << length;
        ASSERT_LE(reader.cutAt().value_or(0), length);
        const auto messages = messagesOf(reader);
        ASSERT_EQ(messages.size() % 10, 0U) << length; // whole chunks
        ASSERT_TRUE(std::ranges::equal(messages, std::span(written).first(messages.size()))) << length;
        ASSERT_GE(messages.size(), before) << length;
        before = messages.size();
    }
    EXPECT_EQ(before, written.size());
}

TEST_F(McapReader, FindsOutWhateverByteIsSpoilt)
{
    const auto written = recorded(Compression::Lz4, 20, 10);
    const auto whole = content();
    std::size_t noticed = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        auto spoilt = whole;
        spoilt[i] = static_cast<char>(spoilt[i] ^ 0x41);
        setContent(spoilt);
        try {
            Reader reader(file());
            const auto messages = messagesOf(reader);
            // What the summary makes superfluous may be spoilt, and the end of a file may be missing.
            ASSERT_EQ(messages, written) << i;
        } catch (const FormatError& error) {
            ASSERT_THAT(error.what(), HasSubstr(", at byte "));
            ASSERT_LE(error.offset(), whole.size());
            ++noticed;
        }
    }
    EXPECT_GT(noticed, whole.size() / 3);
}

TEST_F(McapReader, RefusesWhatIsNoSuchFile)
{
    expectComplaint("", "this is no MCAP file of version 0: it begins otherwise, at byte 0");
    expectComplaint("#ROSBAG V2.0\n", "this is no MCAP file");
    expectComplaint("\x89MCAP1\r\n" + std::string(100, '\0'), "this is no MCAP file of version 0");
    expectComplaint(magicBytes + plainChannel() + std::string(40, '\0') + magicBytes,
                    "there is no footer, at byte ");
    expectComplaint(magicBytes + plainChannel(), "the file does not begin with a header, at byte 8");
}

TEST_F(McapReader, RefusesFilesThatAreNotThereOrNoFiles)
{
    EXPECT_THAT(complaint(), HasSubstr("recording.mcap\": No such file or directory"));
    EXPECT_THROW(Reader(file().parent_path()), FileError);
    EXPECT_THROW(Reader("/dev/zero"), FileError);
}

TEST_F(McapReader, RefusesWrongChecksums)
{
    expectComplaint(plainFile(plainChannel() + plainChunk(plainMessage(1, "x"), 12345)),
                    "a chunk has a wrong checksum, at byte ");
    recorded(Compression::Zstd);
    auto bytes = content();
    bytes[bytes.size() - 60] = static_cast<char>(bytes[bytes.size() - 60] ^ 1);
    expectComplaint(bytes, "the summary has a wrong checksum, at byte ");
    const auto data = magicBytes + record(0x01, textOf("") + textOf(""));
    expectComplaint(data + record(0x0F, bytesOf(std::uint32_t{1})) + record(0x02, std::string(20, '\0')) +
                        magicBytes,
                    "the data has a wrong checksum, at byte ");
}

TEST_F(McapReader, RefusesDamagedRecords)
{
    const std::uint64_t endless = ~std::uint64_t{0};
    expectComplaint(plainFile('\x09' + bytesOf(endless)), "a record is damaged");
    expectComplaint(plainFile('\x00' + bytesOf(std::uint64_t{0})), "a record is damaged");
    expectComplaint(plainFile(record(0x04, "xx")), "a record is longer than the room that it has");
    expectComplaint(plainFile(plainMessage(1, "")), "a message has channel 1, which is not there");
    expectComplaint(plainFile(plainChannel() + record(0x05, "short")), "a record is longer than the room");
    expectComplaint(plainFile(plainChannel() + plainChunk(std::string("\x05") + bytesOf(endless))),
                    "a record is longer than the room that it has in the chunk, at byte ");
    expectComplaint(plainFile(plainChannel() + plainChunk(plainMessage(1, ""), 0, "zstd")),
                    "a chunk can not be uncompressed");
    expectComplaint(plainFile(plainChannel() + plainChunk(plainMessage(1, ""), 0, "lz4")),
                    "a chunk can not be uncompressed");
    expectComplaint(plainFile(plainChannel() + plainChunk(plainMessage(1, ""), 0, "brotli")),
                    "a chunk has the unknown compression \"brotli\"");
    expectComplaint(
        plainFile(plainChannel() + record(0x04, bytesOf(std::uint16_t{1}) + bytesOf(std::uint16_t{0}) +
                                                    textOf("other") + textOf("cdr") + textOf(""))),
        "there are two channels with number 1");
}

TEST_F(McapReader, TakesNoMoreMemoryThanItMay)
{
    const auto huge = bytesOf(std::uint64_t{1} << 40U);
    const auto chunk =
        record(0x06, bytesOf(std::uint64_t{0}) + bytesOf(std::uint64_t{0}) + huge +
                         bytesOf(std::uint32_t{0}) + textOf("zstd") + bytesOf(std::uint64_t{0}));
    expectComplaint(plainFile(chunk),
                    "a record or chunk has 1099511627776 bytes, and 268435456 are the most");

    setContent(plainFile(plainChannel() +
                         plainChunk(plainMessage(1, std::string(600, 'x')) + plainMessage(9, "")) +
                         plainChunk(plainMessage(2, std::string(600, 'x')) + plainMessage(8, ""))));
    ReaderOptions options;
    options.mostMemoryBytes = 1000;
    Reader reader(file(), options);
    EXPECT_THROW(messagesOf(reader), FormatError);
}

TEST_F(McapReader, TakesZerosAtTheEndForACut)
{
    const auto written = recorded(Compression::None, 30, 10);
    setContent(content() + std::string(100, '\0')); // as after a loss of power
    Reader reader(file());
    EXPECT_TRUE(reader.cutAt());
    EXPECT_EQ(messagesOf(reader), written);
}

} // namespace

} // namespace ovra::plex::mcap
