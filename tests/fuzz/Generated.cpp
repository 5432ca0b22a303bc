// SPDX-License-Identifier: Apache-2.0
// Types with all that a definition may say, one of each extensibility, as plex-idl generates them. The codec,
// which was written apart from what is generated, has the last word on what is written.
#include "Check.hpp"
#include "GuardedMemory.hpp"
#include "Target.hpp"

#include <plex/idl/Codec.hpp>
#include <plex/idl/Parse.hpp>
#include <plex/module/PubSubType.hpp>

#include <algorithm>
#include <dds/FixedCdr.hpp>
#include <dds/GrowingCdr.hpp>
#include <dds/LooseCdr.hpp>
#include <optional>
#include <string>
#include <vector>

namespace plex::fuzz
{

namespace
{

namespace idl = ovra::plex::idl;
namespace wire = generated::dds_::everything;

using Bytes = std::vector<std::uint8_t>;
using eprosima::fastdds::dds::XCDR2_DATA_REPRESENTATION;
using eprosima::fastdds::dds::XCDR_DATA_REPRESENTATION;
using ovra::plex::fastdds::DataRepresentationId;

/// A payload over memory that is not its own.
class BorrowedPayload : public ovra::plex::fastdds::SerializedPayload_t
{
public:
    explicit BorrowedPayload(std::span<std::uint8_t> memory)
    {
        data = memory.data();
        max_size = static_cast<std::uint32_t>(memory.size());
    }

    BorrowedPayload(const BorrowedPayload&) = delete;
    BorrowedPayload& operator=(const BorrowedPayload&) = delete;

    ~BorrowedPayload() { data = nullptr; }
};

const idl::Type& typeCalled(const std::string& name)
{
    static const idl::ParseResult result = idl::parseFile(PLEX_FUZZ_DEFINITION);
    check(result.model.has_value(), "there is a model of what is generated");
    return *result.model->findType("everything::" + name);
}

template <class Value>
class Target
{
public:
    explicit Target(const std::string& name)
        : type_({"T", 1U << 20U, true, 16, false, false})
        , model_(typeCalled(name))
    {
    }

    void run(std::span<const std::uint8_t> input)
    {
        Value value;
        if (!read(input, value)) {
            return;
        }
        for (const DataRepresentationId representation :
             {XCDR_DATA_REPRESENTATION, XCDR2_DATA_REPRESENTATION}) {
            const Bytes written = write(value, representation);
            Value again;
            check(read(written, again), "what was written can be read");
            check(write(again, representation) == written,
                  "and is the same value"); // which has NaNs, perhaps
            const bool isOld = representation == XCDR_DATA_REPRESENTATION;
            const auto version = isOld ? idl::XcdrVersion::Xcdr1 : idl::XcdrVersion::Xcdr2;
            check(idl::encode(model_, idl::decode(model_, written), {version, std::endian::native, false}) ==
                      written,
                  "the codec reads and writes it in the same way");
            checkKey(value, again);
        }
    }

private:
    bool read(std::span<const std::uint8_t> bytes, Value& value)
    {
        BorrowedPayload payload({memory_.last(bytes.size()), bytes.size()});
        std::ranges::copy(bytes, payload.data);
        payload.length = payload.max_size;
        return base().deserialize(&payload, &value);
    }

    Bytes write(Value& value, DataRepresentationId representation)
    {
        const std::uint32_t size = base().getSerializedSizeProvider(&value, representation)();
        check(size > 0, "the size is known beforehand");
        BorrowedPayload payload({memory_.last(size), size});
        std::fill_n(payload.data, size, std::uint8_t{0}); // Fast CDR leaves padding as it is
        check(base().serialize(&value, &payload, representation), "what was read can be written");
        check(payload.length == size, "in as many bytes");
        return {payload.data, payload.data + size};
    }

    void checkKey(Value& first, Value& second)
    {
        ovra::plex::fastdds::InstanceHandle_t ofFirst;
        ovra::plex::fastdds::InstanceHandle_t ofSecond;
        check(base().getKey(&first, &ofFirst) && base().getKey(&second, &ofSecond) && ofFirst == ofSecond,
              "equal values have equal keys");
    }

    ovra::plex::fastdds::TopicDataType& base() { return type_; }

    ovra::plex::ps::PubSubType<Value> type_;
    const idl::Type& model_;
    GuardedMemory memory_;
};

} // namespace

/// The first byte chooses the type; the rest is a payload.
void run(std::span<const std::uint8_t> input)
{
    static Target<wire::Fixed> fixed("Fixed");
    static Target<wire::Growing> growing("Growing");
    static Target<wire::Loose> loose("Loose");
    if (input.empty()) {
        return;
    }
    const auto payload = input.subspan(1);
    switch (input[0] % 3) {
    case 0:
        return fixed.run(payload);
    case 1:
        return growing.run(payload);
    default:
        return loose.run(payload);
    }
}

} // namespace plex::fuzz
