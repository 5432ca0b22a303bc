// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastcdr/Cdr.h>
#include <fastcdr/CdrSizeCalculator.hpp>
#include <fastcdr/exceptions/BadParamException.h>
#include <fastcdr/exceptions/NotEnoughMemoryException.h>

#include <cstddef>
#include <cstdint>

/// Encodes and decodes the members of an appendable type (XTypes 1.3, 7.4.3.5) whose member ids are 0, 1, …
/// in the order of the arguments. A module's Fast CDR functions are one call each.
namespace ovra::plex::ps::cdr
{

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::CdrSizeCalculator;
using eprosima::fastcdr::CdrVersion;
using eprosima::fastcdr::EncodingAlgorithmFlag;
using eprosima::fastcdr::MemberId;

/// How an appendable type is encoded in a version of CDR.
inline EncodingAlgorithmFlag appendableEncoding(CdrVersion version) noexcept
{
    return version == CdrVersion::XCDRv2 ? EncodingAlgorithmFlag::DELIMIT_CDR2
                                         : EncodingAlgorithmFlag::PLAIN_CDR;
}

/// The bytes that serializeMembers() will write from the current alignment.
template <class... Members>
std::size_t membersSize(CdrSizeCalculator& calculator, std::size_t& currentAlignment,
                        const Members&... members)
{
    const auto outer = calculator.get_encoding();
    std::size_t size = calculator.begin_calculate_type_serialized_size(
        appendableEncoding(calculator.get_cdr_version()), currentAlignment);
    std::uint32_t id = 0;
    ((size += calculator.calculate_member_serialized_size(MemberId(id++), members, currentAlignment)), ...);
    return size + calculator.end_calculate_type_serialized_size(outer, currentAlignment);
}

/// @throws eprosima::fastcdr::exception::NotEnoughMemoryException when the stream's buffer is too small.
template <class... Members>
void serializeMembers(Cdr& cdr, const Members&... members)
{
    Cdr::state state(cdr);
    cdr.begin_serialize_type(state, appendableEncoding(cdr.get_cdr_version()));
    std::uint32_t id = 0;
    ((cdr << MemberId(id++) << members), ...);
    cdr.end_serialize_type(state);
}

/// Where the delimiter header at the stream's position says that the members end; the position stays.
/// @throws eprosima::fastcdr::exception::NotEnoughMemoryException when that lies beyond the buffer.
inline const char* delimitedEnd(Cdr& cdr)
{
    const Cdr::state start(cdr);
    std::uint32_t length = 0;
    cdr >> length;
    if (!cdr.jump(length)) {
        throw eprosima::fastcdr::exception::NotEnoughMemoryException(
            "The delimiter header announces more than the buffer holds");
    }
    const char* const end = cdr.get_current_position();
    cdr.set_state(start);
    return end;
}

/// Reads the members from a stream of the given encoding.
///
/// A delimited value may come from another version of the type: members that it lacks get their defaults,
/// members that it has beyond the known ones are skipped. The plain encodings carry no length, so all
/// members must be there.
///
/// @throws eprosima::fastcdr::exception::Exception when the input is truncated or its delimiter header does
///         not fit the members; some members may then have been written.
template <class... Members>
void deserializeMembers(Cdr& cdr, EncodingAlgorithmFlag encoding, Members&... members)
{
    const bool delimited = encoding == EncodingAlgorithmFlag::DELIMIT_CDR2;
    const char* const end = delimited ? delimitedEnd(cdr) : nullptr;

    ((members = Members{}), ...);
    std::uint32_t found = 0;
    cdr.deserialize_type(encoding, [&](Cdr& stream, const MemberId& wanted) {
        std::uint32_t id = 0;
        const bool known = ((id++ == wanted.id && (stream >> members, true)) || ...);
        found += known ? 1 : 0;
        return known;
    });

    if (delimited && cdr.get_current_position() != end) {
        throw eprosima::fastcdr::exception::BadParamException("A member crosses the end of its type");
    }
    if (!delimited && found < sizeof...(Members)) {
        throw eprosima::fastcdr::exception::NotEnoughMemoryException("The input ends before the last member");
    }
}

} // namespace ovra::plex::ps::cdr
