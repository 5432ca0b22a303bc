// SPDX-License-Identifier: Apache-2.0
// The words of refusals whose circumstances are tested elsewhere.
#include "FaultTest.hpp"

#include <generated/vexstubif/AltAzCdr.hpp>
#include <plex/QoS.hpp>

#include <fastcdr/exceptions/BadParamException.h>
#include <fastcdr/exceptions/NotEnoughMemoryException.h>

#include <array>
#include <limits>
#include <system_error>

namespace plex::test
{

namespace
{

namespace cdr = eprosima::fastcdr;

/// Reads a position from the first bytes of a buffer that begins with a delimiter and is zero behind it.
void decode(std::uint32_t delimiter, std::size_t bytes, cdr::EncodingAlgorithmFlag encoding)
{
    std::array<char, 32> content{};
    cdr::FastBuffer buffer(content.data(), content.size());
    cdr::Cdr(buffer) << delimiter;
    cdr::FastBuffer received(content.data(), bytes);
    cdr::Cdr stream(received, cdr::Cdr::DEFAULT_ENDIAN,
                    encoding == cdr::EncodingAlgorithmFlag::PLAIN_CDR ? cdr::CdrVersion::XCDRv1
                                                                      : cdr::CdrVersion::XCDRv2);
    generated::dds_::vexstubif::AltAz value;
    cdr::deserialize(stream, value, encoding);
}

} // namespace

class RefusalTextsTest : public FaultTest
{
};

TEST_F(RefusalTextsTest, OfADelimiterBeyondTheBuffer)
{
    EXPECT_EQ(thrownText<cdr::exception::NotEnoughMemoryException>(
                  [] { decode(17, 20, cdr::EncodingAlgorithmFlag::DELIMIT_CDR2); }),
              "The delimiter header announces more than the buffer holds");
}

TEST_F(RefusalTextsTest, OfADelimiterThatCutsAMember)
{
    EXPECT_EQ(thrownText<cdr::exception::BadParamException>(
                  [] { decode(12, 20, cdr::EncodingAlgorithmFlag::DELIMIT_CDR2); }),
              "A member crosses the end of its type");
}

TEST_F(RefusalTextsTest, OfAnInputWithoutItsLastMember)
{
    EXPECT_EQ(thrownText<cdr::exception::NotEnoughMemoryException>(
                  [] { decode(0, 8, cdr::EncodingAlgorithmFlag::PLAIN_CDR); }),
              "The input ends before the last member");
}

TEST_F(RefusalTextsTest, OfASourceTimestampThatDdsCannotCarry)
{
    const auto publisher = this->publisher();
    const LogCapture log;
    EXPECT_EQ(thrownText<PlexException>([&] { publisher->publish(2147483648.0, *position(1), 0ms); }),
              "Source timestamp does not fit 32 bits of seconds: 2147483648.000000");
    EXPECT_THAT(recordsOf(log), testing::IsEmpty());
}

TEST_F(RefusalTextsTest, OfADurationThatIsTooLong)
{
    namespace qos = ovra::plex::ps::qos;
    EXPECT_EQ(thrownText<PlexException>([] { const qos::Deadline deadline(2147483648ms); }),
              "Duration of a QoS does not fit 32 bits of milliseconds: 2147483648");
}

TEST_F(RefusalTextsTest, OfATextThatIsNoUri)
{
    try {
        const Uri broken("dds+ps://0/a b");
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("Unable to parse URI string."));
    }
}

} // namespace plex::test
