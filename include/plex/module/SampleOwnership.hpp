// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>
#include <stdexcept>
#include <utility>

namespace ovra::plex::icd::dds
{

/// Asks an adapter's constructor to view a wire value that somebody else owns.
struct Borrow {
};

/// A new wire value, owned by the caller.
/// @throws std::runtime_error when memory for it cannot be had.
template <class DdsType, class... Arguments>
DdsType* createSample(Arguments&&... arguments)
{
    auto* const sample = new (std::nothrow) DdsType(std::forward<Arguments>(arguments)...);
    if (sample == nullptr) {
        throw std::runtime_error("failed to create a DDS sample");
    }
    return sample;
}

/// Deletes a wire value that its adapter owns; null is ignored.
template <class DdsType>
void ddsSampleDeleter(DdsType* sample)
{
    delete sample;
}

/// Leaves alone a wire value that its adapter borrows.
template <class DdsType>
void noOpDeleter(DdsType* /*sample*/)
{
}

} // namespace ovra::plex::icd::dds
