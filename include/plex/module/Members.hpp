// SPDX-License-Identifier: Apache-2.0
// What the setters of adapters do with members that may be refused.
#pragma once

#include <plex/Export.hpp>
#include <plex/Span.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ovra::plex::ps
{

/// @throws PlexException naming member, length and bound where a length is beyond it. @param bound 0: none.
PLEX_EXPORT void checkLength(const char* member, std::size_t length, std::uint32_t bound);

/// @throws PlexException as above, and where a text holds a NUL, at which readers would end it.
PLEX_EXPORT void checkText(const char* member, std::string_view text, std::uint32_t bound);

inline void assignText(const char* member, std::string& target, std::string_view text, std::uint32_t bound)
{
    checkText(member, text, bound);
    target = text;
}

inline void assignText(const char* member, std::optional<std::string>& target,
                       std::optional<std::string_view> text, std::uint32_t bound)
{
    if (text) {
        checkText(member, *text, bound);
        target = *text;
    } else {
        target.reset();
    }
}

/// @param initial what new elements are, where their type does not say it.
template <class Elements, class... Initial>
Elements& resizeSequence(const char* member, Elements& target, std::size_t size, std::uint32_t bound,
                         const Initial&... initial)
{
    checkLength(member, size, bound);
    target.resize(size, initial...);
    return target;
}

/// Whether elements are, even in part, those of a container.
template <class Elements, class T>
bool isWithin(const Elements& container, Span<const T> elements)
{
    const std::less_equal<const T*> isUpTo;
    return !container.empty() && isUpTo(container.data(), elements.data()) &&
           std::less<const T*>()(elements.data(), container.data() + container.size());
}

template <class Elements>
void assignSequence(const char* member, Elements& target, Span<const typename Elements::value_type> elements,
                    std::uint32_t bound)
{
    checkLength(member, elements.size(), bound);
    if (isWithin(target, elements)) {
        Elements copy;
        copy.resize(elements.size());
        std::copy(elements.begin(), elements.end(), copy.begin());
        target = std::move(copy);
    } else {
        target.resize(elements.size());
        std::copy(elements.begin(), elements.end(), target.begin());
    }
}

} // namespace ovra::plex::ps
