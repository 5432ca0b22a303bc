// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/Plex.hpp>
#include <plex/fastdds/Generation.hpp>

#include <cstdint>
#include <optional>

/// What the properties say to entities, and what follows for their quality of service.
namespace ovra::plex::ps::internal
{

/// How long closing waits for acknowledgments, in milliseconds; 0 or less: not at all.
/// @throws PlexException when the property is no number.
PLEX_EXPORT std::int64_t waitForAckTimeoutMs(const Plex::Properties& properties);

/// The data representation (XTypes 1.3, 7.6.3.1) that property "dds.data_representation" asks for, or nothing
/// where it is absent.
/// @throws PlexException naming the property, its value and the allowed ones.
PLEX_EXPORT std::optional<fastdds::DataRepresentationId>
dataRepresentation(const Plex::Properties& properties);

/// Where the asynchronous callbacks of a subscriber run.
enum class CallbacksOn { Transport, OwnThread };

/// What property "dds.callback.thread" says, "transport" where it is absent.
/// @throws PlexException naming the property, its value and the allowed ones.
PLEX_EXPORT CallbacksOn callbacksOn(const Plex::Properties& properties);

/// Whether exceptions of asynchronous callbacks are logged instead of passed on: property
/// "dds.callback.exceptions" says "log" then, and "pass" where it is absent.
/// @throws PlexException naming the property, its value and the allowed ones.
PLEX_EXPORT bool logsCallbackExceptions(const Plex::Properties& properties);

/// Lets a writer offer the representation asked for, if any.
/// @param mayPreallocate as the function of this name says of its type.
PLEX_EXPORT void setRepresentation(eprosima::fastdds::dds::DataWriterQos& qos,
                                   std::optional<fastdds::DataRepresentationId> asked, bool mayPreallocate);

/// Lets a reader accept every representation, if one is asked for: the payload says which it is.
PLEX_EXPORT void setRepresentation(eprosima::fastdds::dds::DataReaderQos& qos,
                                   std::optional<fastdds::DataRepresentationId> asked);

} // namespace ovra::plex::ps::internal
