// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CdrOracle.hpp"
#include "Check.hpp"
#include "GuardedMemory.hpp"

#include <plex/fastdds/Generation.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

namespace plex::fuzz
{

using ovra::plex::fastdds::InstanceHandle_t;
using ovra::plex::fastdds::SerializedPayload_t;
using ovra::plex::fastdds::TopicDataType;

/// A payload over memory that is not its own.
class BorrowedPayload : public SerializedPayload_t
{
public:
    BorrowedPayload(std::uint8_t* memory, std::size_t size)
    {
        data = memory;
        max_size = static_cast<std::uint32_t>(size);
        encapsulation = unmarked;
    }

    BorrowedPayload(const BorrowedPayload&) = delete;
    BorrowedPayload& operator=(const BorrowedPayload&) = delete;

    ~BorrowedPayload() { data = nullptr; }

    std::span<const std::uint8_t> content() const { return {data, length}; }

    static constexpr std::uint16_t unmarked = 0x7777;
};

/// Gives bytes to a topic data type as a payload and checks what it makes of them.
///
/// A trait says `PubSubType`, `membersOf(value)` and `valid(members)`, the bounds that a type has beyond the
/// encoding, and `mayGoOn`, whether anything may follow a value, as it may those of numbers only.
template <class Trait>
class PayloadTarget
{
    using PubSubType = typename Trait::PubSubType;
    using Value = typename PubSubType::type;

public:
    void run(std::span<const std::uint8_t> input)
    {
        Value value;
        const auto expected = expectedMembers(input);
        check(deserialize(input, value) == expected.has_value(),
              "exactly what the wire format allows is read");
        if (expected) {
            check(Trait::membersOf(value) == *expected, "every member is read bit by bit");
            checkKey(value);
            checkWriting(value, *expected, eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION);
            checkWriting(value, *expected, eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION);
        }
    }

private:
    static std::optional<Members> expectedMembers(std::span<const std::uint8_t> input)
    {
        auto members = decode(input, Trait::membersOf(Value()), Trait::mayGoOn);
        return members && Trait::valid(*members) ? members : std::nullopt;
    }

    bool deserialize(std::span<const std::uint8_t> input, Value& value)
    {
        BorrowedPayload payload(memory_.last(input.size()), input.size());
        std::ranges::copy(input, payload.data);
        payload.length = payload.max_size;
        const bool accepted = topicType().deserialize(&payload, &value);
        check(std::ranges::equal(payload.content(), input), "reading changes neither length nor content");
        checkMark(payload.encapsulation, input, accepted);
        return accepted;
    }

    /// A payload is marked with its byte order; a refused one may be left without a mark.
    static void checkMark(int mark, std::span<const std::uint8_t> input, bool accepted)
    {
        if (accepted) {
            const auto encoding = Encoding::of(input);
            check(encoding.has_value(), "what is accepted has an encoding");
            check(encoding && mark == (encoding->order == std::endian::big ? CDR_BE : CDR_LE),
                  "the mark is the byte order");
        } else {
            check(mark == CDR_BE || mark == CDR_LE || mark == BorrowedPayload::unmarked, "the mark is one");
        }
    }

    void checkWriting(Value& value, const Members& members,
                      ovra::plex::fastdds::DataRepresentationId representation)
    {
        const auto expected =
            encode(members, representation != eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION);
        const std::size_t size = expected.size();
        check(topicType().getSerializedSizeProvider(&value, representation)() == size,
              "the size is known beforehand");
        check(size <= topicType().m_typeSize, "the size is within the type's bound");

        BorrowedPayload payload(memory_.last(size), size);
        std::fill_n(payload.data, size, std::uint8_t{0}); // Fast CDR leaves padding as it is
        check(topicType().serialize(&value, &payload, representation), "what was read can be written");
        check(std::ranges::equal(payload.content(), expected), "it is written as the wire format says");

        BorrowedPayload small(memory_.last(size - 1), size - 1);
        check(!topicType().serialize(&value, &small, representation),
              "a buffer that is too small is refused");
        check(small.length == 0, "its length is not touched then");

        Value again;
        check(deserialize(expected, again), "what was written can be read");
        check(Trait::membersOf(again) == members, "what was written is read bit by bit");
    }

    void checkKey(Value& value)
    {
        Value copy(value);
        InstanceHandle_t first;
        InstanceHandle_t second;
        const bool keyed = topicType().m_isGetKeyDefined;
        check(topicType().getKey(&value, &first) == keyed, "a value has a key exactly when its type has one");
        check(topicType().getKey(&copy, &second) == keyed && first == second, "equal values have equal keys");
    }

    TopicDataType& topicType() { return type_; }

    PubSubType type_;
    GuardedMemory memory_;
};

} // namespace plex::fuzz
