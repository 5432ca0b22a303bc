// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

namespace ovra::plex
{

/// An array, or one of arrays, all of whose elements have one value.
template <class Array, class Value>
constexpr Array filledArray(const Value& value)
{
    using Element = typename Array::value_type;
    Array result{};
    for (Element& element : result) {
        if constexpr (std::is_same_v<Element, Value>) {
            element = value;
        } else {
            element = filledArray<Element>(value);
        }
    }
    return result;
}

} // namespace ovra::plex
