// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Channel.hpp"

#include <plex/Export.hpp>

#include <fastcdr/Cdr.h>
#include <fastcdr/CdrSizeCalculator.hpp>

#include <cstddef>

/// The encoding of Channel for Fast CDR: delimited in XCDR version 2, plain in version 1.
namespace eprosima::fastcdr
{

/// The bytes that serialize() will write from the current alignment, which is moved past them.
template <>
PLEX_EXPORT std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                                  const generated::dds_::keyed::Channel& data,
                                                  std::size_t& currentAlignment);

/// @throws exception::NotEnoughMemoryException when the stream's buffer is too small.
template <>
PLEX_EXPORT void serialize(Cdr& cdr, const generated::dds_::keyed::Channel& data);

/// @throws exception::Exception when the input is truncated or malformed; the value may then be partly
///         written.
template <>
PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::keyed::Channel& data);

/// The same for a stream whose encoding is not the usual one of its CDR version.
PLEX_EXPORT void deserialize(Cdr& cdr, generated::dds_::keyed::Channel& data, EncodingAlgorithmFlag encoding);

/// Writes the key members: number.
PLEX_EXPORT void serialize_key(Cdr& cdr, const generated::dds_::keyed::Channel& data);

} // namespace eprosima::fastcdr
