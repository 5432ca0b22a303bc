// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>

namespace ovra::plex::ps
{

/// A received value that still lies in the transport's memory: reading it copies nothing.
///
/// Not for keeping: each loan holds a slot of its subscriber's cache. Use read() for values to keep.
/// Threads: one at a time. Ownership: the loan keeps what it needs of its subscriber alive, also after that
/// was closed or dropped.
template <class T>
class PLEX_EXPORT LoanedDataEntity
{
public:
    /// The value; the reference is valid until the loan is closed or destroyed.
    virtual T& getData() = 0;

    /// Gives the loan back; closing again does nothing.
    /// @throws PlexException when the transport refuses it; the loan then stays open.
    virtual void close() = 0;

    /// Gives the loan back unless closed; a refusal is logged only.
    virtual ~LoanedDataEntity() = default;
};

} // namespace ovra::plex::ps
