// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace ovra::plex::idl
{

/// Whether a word means something in definitions of data types.
bool isKeyword(std::string_view word);

/// Whether a word is a keyword of what is not supported, such as interfaces, and so a name that other tools
/// refuse.
bool isUnusedKeyword(std::string_view word);

/// Whether a word is one of both kinds, whatever its case.
bool isKeywordInAnyCase(std::string_view word);

/// What the keywords are that begin something that is not supported: "interfaces are", or nothing.
std::string_view unsupportedBehind(std::string_view word);

/// What to write instead of a name from another language; empty where that is not known.
std::string hintForUnknown(const std::string& name);

} // namespace ovra::plex::idl
