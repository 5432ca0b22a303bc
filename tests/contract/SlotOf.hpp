// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bit>
#include <cstddef>
#include <stdexcept>

namespace plex::test
{

/// The place of a virtual operation in its class's virtual table, counted from 0.
///
/// Itanium C++ ABI, 2.3: a pointer to a virtual member function holds the offset of its table entry, marked
/// as virtual by an added 1, or on Arm by the lowest bit of the adjustment.
template <class Operation, class Class>
std::ptrdiff_t slotOf(Operation Class::* operation)
{
    struct Representation {
        std::ptrdiff_t pointer;
        std::ptrdiff_t adjustment;
    };
#if defined(__arm__) || defined(__aarch64__)
    constexpr bool markedInAdjustment = true;
#else
    constexpr bool markedInAdjustment = false;
#endif
    const auto [pointer, adjustment] = std::bit_cast<Representation>(operation);
    if (((markedInAdjustment ? adjustment : pointer) & 1) == 0) {
        throw std::invalid_argument("the operation is not virtual");
    }
    const auto offset = markedInAdjustment ? pointer : pointer - 1;
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

/// The number of slots that a class occupies: the place of one more virtual operation.
template <class Interface>
std::ptrdiff_t slotCount()
{
    struct Probe : Interface {
        virtual void probe() = 0;
    };

    return slotOf(&Probe::probe);
}

} // namespace plex::test
