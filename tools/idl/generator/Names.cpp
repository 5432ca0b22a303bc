// SPDX-License-Identifier: Apache-2.0
#include "Names.hpp"

#include "CommonNames.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

using Words = std::unordered_set<std::string_view>;

/// Keywords of C++ up to C++20, and macros of the C library and of compilers that any header may bring along.
const Words& reservedWords()
{
    static const Words words{
        "alignas",     "alignof",      "and",     "and_eq",     "asm",       "assert",    "auto",
        "bitand",      "bitor",        "bool",    "break",      "case",      "catch",     "char",
        "char16_t",    "char32_t",     "char8_t", "class",      "co_await",  "co_return", "co_yield",
        "compl",       "concept",      "const",   "const_cast", "consteval", "constexpr", "constinit",
        "continue",    "decltype",     "default", "delete",     "do",        "double",    "dynamic_cast",
        "else",        "enum",         "EOF",     "errno",      "explicit",  "export",    "extern",
        "false",       "float",        "for",     "friend",     "goto",      "if",        "inline",
        "int",         "linux",        "long",    "major",      "minor",     "mutable",   "namespace",
        "new",         "noexcept",     "not",     "not_eq",     "NULL",      "nullptr",   "operator",
        "or",          "or_eq",        "private", "protected",  "public",    "register",  "reinterpret_cast",
        "requires",    "return",       "short",   "signed",     "sizeof",    "static",    "static_assert",
        "static_cast", "stderr",       "stdin",   "stdout",     "struct",    "switch",    "template",
        "this",        "thread_local", "throw",   "true",       "try",       "typedef",   "typeid",
        "typename",    "union",        "unix",    "unsigned",   "using",     "virtual",   "void",
        "volatile",    "wchar_t",      "while",   "xor",        "xor_eq"};
    return words;
}

const Words& namespacesInUse()
{
    static const Words words{"eprosima", "generated", "ovra", "std", "values"};
    return words;
}

/// What modules have for each of their enums or bitmasks.
const Words& functionsInUse()
{
    static const Words words{"has", "isKnown", "toString"};
    return words;
}

std::string namespaceName(std::string_view name)
{
    return namespacesInUse().contains(name) ? std::string(name) + "_" : cppName(name);
}

/// The namespaces for the modules around something, outermost first: that one must be no name of a function.
std::vector<std::string> namespacePath(const Module& module)
{
    std::vector<std::string> path = modulePath(module);
    for (std::string& name : path) {
        name = namespaceName(name) + (&name == &path.front() && isGlobal(name) ? "_" : "");
    }
    return path;
}

char upperCase(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator)
{
    std::string text;
    for (const std::string& part : parts) {
        text += text.empty() ? "" : separator;
        text += part;
    }
    return text;
}

} // namespace

std::string cppName(std::string_view name)
{
    return std::string(name) + (reservedWords().contains(name) || isMacro(name) ? "_" : "");
}

std::string declaredName(std::string_view name)
{
    const bool isTaken = namespacesInUse().contains(name) || functionsInUse().contains(name);
    return isTaken ? std::string(name) + "_" : cppName(name);
}

std::string accessorName(std::string_view name)
{
    std::string result;
    const std::size_t end = name.find_last_not_of('_') + 1;
    bool atStart = true;
    for (const char c : name.substr(0, end)) {
        if (c == '_') {
            atStart = true;
            continue;
        }
        result += atStart ? upperCase(c) : c;
        atStart = false;
    }
    return result.append(name.substr(end)); // "class" and "class_" are two names
}

std::vector<std::string> modulePath(const Module& module)
{
    std::vector<std::string> path;
    for (const Module* each = &module; each->parent != nullptr; each = each->parent) {
        path.push_back(each->name);
    }
    std::ranges::reverse(path);
    return path;
}

std::string namespaceOf(const Module& module)
{
    return joined(namespacePath(module), "::");
}

std::string symbolOf(const Module& module)
{
    return joined(namespacePath(module), "_");
}

std::string qualifiedName(const NamedType& type)
{
    const std::string scope = namespaceOf(*type.module);
    return "::" + scope + (scope.empty() ? "" : "::") + declaredName(type.name);
}

std::string NameScope::take(std::string name)
{
    while (!taken_.insert(name).second) {
        name += '_';
    }
    return name;
}

} // namespace ovra::plex::idl
