// SPDX-License-Identifier: Apache-2.0
// The one home of the destructors, and so of the type information, of the contract's plain classes.
#include <plex/DataEntity.hpp>
#include <plex/Subscription.hpp>

namespace ovra::plex::ps
{

DataEntityBase::~DataEntityBase() = default;

Subscription::~Subscription() = default;

} // namespace ovra::plex::ps
