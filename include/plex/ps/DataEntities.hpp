// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/module/TopicAdapter.hpp>

#include <log4cplus/logger.h>

#include <memory>

namespace ovra::plex::ps
{

/// A new value over a default wire value; adapter and control block are one allocation.
/// @throws std::runtime_error "failed to create a DDS sample".
template <class T, class ST>
std::shared_ptr<T> createDataEntityInternal()
{
    return std::make_shared<ST>();
}

/// A new value with a copy of every field of a wire value; throws as above.
template <class T, class ST>
std::shared_ptr<T> createDataEntityFrom(const typename ST::DdsType& sample)
{
    auto entity = std::make_shared<ST>();
    entity->assign(sample);
    return entity;
}

namespace internal
{

/// Logs and throws for a value that is not this binding's.
/// @param line where the log record says that it comes from.
[[noreturn]] PLEX_EXPORT void refuseForeignValue(const log4cplus::Logger& logger, int line);

} // namespace internal

/// The adapter behind an interface value.
/// @param logger the caller's, for the ERROR record of a refusal.
/// @throws IllegalStateException when the value is of another class.
template <class T, class ST>
const ST& obtainImpl(const T& value, log4cplus::Logger& logger)
{
    if (const auto* const adapter = dynamic_cast<const ST*>(&value)) {
        return *adapter;
    }
    internal::refuseForeignValue(logger, 105);
}

/// As above, for a value that may be changed.
template <class T, class ST>
ST& obtainImpl(T& value, log4cplus::Logger& logger)
{
    if (auto* const adapter = dynamic_cast<ST*>(&value)) {
        return *adapter;
    }
    internal::refuseForeignValue(logger, 127);
}

} // namespace ovra::plex::ps
