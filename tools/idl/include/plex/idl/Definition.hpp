// SPDX-License-Identifier: Apache-2.0
// From types back to the text of their definition. Any thread may call this.
#pragma once

#include <plex/idl/Model.hpp>

#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// The definition of types and of all that they are made of, as one text that includes nothing: it says what
/// the model knows, ids and extensibility of all kinds among it. Names have their modules, numbers are
/// written where constants stood.
///
/// parseText() makes of it types that are equal but for their places. Documentation, annotations without an
/// effect on the model and @verbatim are left out.
///
/// @param types of the model.
std::string definitionOf(const Model& model, const std::vector<const NamedType*>& types);

} // namespace ovra::plex::idl
