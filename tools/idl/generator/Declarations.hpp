// SPDX-License-Identifier: Apache-2.0
// Plain types of the contract, each as the text of its declaration.
#pragma once

#include "Plan.hpp"

#include <set>
#include <string>

namespace ovra::plex::idl
{

std::string enumDeclaration(const EnumType& type);
std::string bitmaskDeclaration(const BitmaskType& type);
std::string structDeclaration(const StructType& type);
std::string unionDeclaration(const UnionType& type);
std::string aliasDeclaration(const AliasType& type);
std::string constantDeclaration(const Constant& constant);

/// The members of a struct with their names in C++.
struct NamedMember {
    const Member* member;
    std::string name;
};

std::vector<NamedMember> namedMembers(const StructType& type);

/// The cases of a union with their names in C++.
struct NamedCase {
    const UnionCase* unionCase;
    std::string name;
    std::string test; ///< the function that says whether it is there: "isWidth"
};

std::vector<NamedCase> namedCases(const UnionType& type);

/// The headers that a declaration needs.
void addHeadersOf(std::set<std::string>& headers, const NamedType& type);

} // namespace ovra::plex::idl
