// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/idl/Model.hpp>

#include <string>

namespace ovra::plex::idl
{

/// The whole model as JSON (RFC 8259, UTF-8), indented, with the same order of keys each time. Types that
/// have a name are described once and named elsewhere. Ends with an end of line.
std::string toJson(const Model& model);

} // namespace ovra::plex::idl
