// SPDX-License-Identifier: Apache-2.0
#include "Keywords.hpp"

#include "Text.hpp"

#include <unordered_map>
#include <unordered_set>

namespace ovra::plex::idl
{

namespace
{

using Words = std::unordered_set<std::string_view>;

const Words& keywords()
{
    static const Words words{"FALSE",    "TRUE",      "any",       "bitfield", "bitmask", "bitset", "boolean",
                             "case",     "char",      "const",     "default",  "double",  "enum",   "fixed",
                             "float",    "interface", "int16",     "int32",    "int64",   "int8",   "long",
                             "map",      "module",    "octet",     "sequence", "short",   "string", "struct",
                             "switch",   "typedef",   "uint16",    "uint32",   "uint64",  "uint8",  "union",
                             "unsigned", "void",      "valuetype", "wchar",    "wstring"};
    return words;
}

const Words& unusedKeywords()
{
    static const Words words{"Object",    "ValueBase", "abstract",    "alias",     "attribute",  "component",
                             "connector", "consumes",  "context",     "custom",    "emits",      "eventtype",
                             "exception", "factory",   "finder",      "getraises", "home",       "import",
                             "in",        "inout",     "local",       "manages",   "mirrorport", "multiple",
                             "native",    "oneway",    "out",         "port",      "porttype",   "primarykey",
                             "private",   "provides",  "public",      "publishes", "raises",     "readonly",
                             "setraises", "supports",  "truncatable", "typeid",    "typename",   "typeprefix",
                             "uses"};
    return words;
}

Words inLowerCase()
{
    static const std::unordered_set<std::string> kept = [] {
        std::unordered_set<std::string> words;
        for (const auto* const all : {&keywords(), &unusedKeywords()}) {
            for (const auto word : *all) {
                words.insert(lowerCase(word));
            }
        }
        return words;
    }();
    return {kept.begin(), kept.end()};
}

} // namespace

bool isKeyword(std::string_view word)
{
    return keywords().contains(word);
}

bool isUnusedKeyword(std::string_view word)
{
    return unusedKeywords().contains(word);
}

bool isKeywordInAnyCase(std::string_view word)
{
    static const Words words = inLowerCase();
    return words.contains(lowerCase(word));
}

std::string_view unsupportedBehind(std::string_view word)
{
    static const std::unordered_map<std::string_view, std::string_view> kinds{
        {"interface", "interfaces are"},
        {"abstract", "interfaces and value types are"},
        {"local", "interfaces are"},
        {"valuetype", "value types are"},
        {"custom", "value types are"},
        {"eventtype", "event types are"},
        {"component", "components are"},
        {"home", "components are"},
        {"porttype", "components are"},
        {"port", "components are"},
        {"connector", "components are"},
        {"exception", "exceptions are"},
        {"native", "native types are"},
        {"import", "imports are"},
        {"typeid", "repository identifiers are"},
        {"typeprefix", "repository identifiers are"},
        {"alias", "template modules are"}};
    const auto found = kinds.find(word);
    return found == kinds.end() ? std::string_view() : found->second;
}

std::string hintForUnknown(const std::string& name)
{
    static const std::unordered_map<std::string_view, std::string_view> known{
        {"bool", "boolean"},
        {"int", "long or int32"},
        {"byte", "octet or uint8"},
        {"int8_t", "int8"},
        {"uint8_t", "uint8"},
        {"int16_t", "int16"},
        {"uint16_t", "uint16"},
        {"int32_t", "int32"},
        {"uint32_t", "uint32"},
        {"int64_t", "int64"},
        {"uint64_t", "uint64"},
        {"float32", "float"},
        {"float64", "double"},
        {"std::string", "string"},
        {"String", "string"},
        {"vector", "sequence<TYPE>"},
        {"std::vector", "sequence<TYPE>"},
        {"size_t", "uint64"},
        {"std::uint8_t", "uint8"},
        {"std::uint32_t", "uint32"},
        {"std::uint64_t", "uint64"},
        {"std::int32_t", "int32"},
        {"std::int64_t", "int64"},
        {"true", "TRUE"},
        {"false", "FALSE"},
        {"optional", "@optional before the member"}};
    const auto found = known.find(name);
    if (found != known.end()) {
        return "write " + std::string(found->second);
    }
    const std::string lower = lowerCase(name);
    return isKeyword(lower) ? "write " + lower : "";
}

} // namespace ovra::plex::idl
