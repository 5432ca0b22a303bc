// SPDX-License-Identifier: Apache-2.0
#include "Check.hpp"
#include "Target.hpp"

#include <plex/idl/Json.hpp>
#include <plex/idl/Parse.hpp>
#include <plex/idl/Topics.hpp>

#include <algorithm>
#include <optional>
#include <string>

namespace plex::fuzz
{

namespace
{

using namespace ovra::plex::idl;

/// The text includes itself under any name that begins with i, and finds nothing under others.
ParseOptions optionsFor(const std::string& text)
{
    ParseOptions options;
    options.strictCase = text.starts_with('\n');
    options.readFile = [&text](const std::string& path) {
        return path.starts_with('i') ? std::optional(text) : std::nullopt;
    };
    return options;
}

void checkDiagnostics(const Diagnostics& diagnostics, const std::string& text)
{
    const auto lines = static_cast<std::uint32_t>(std::ranges::count(text, '\n') + 1);
    for (const Diagnostic& diagnostic : diagnostics.all()) {
        check(!diagnostic.message.empty(), "each complaint says something");
        check(diagnostic.line >= 1 && diagnostic.line <= lines, "each complaint is about a line");
        check(diagnostic.column >= 1 && diagnostic.column <= text.size() + 2, "and about a place on it");
        check(!toString(diagnostic).empty(), "each complaint can be written");
    }
    check(diagnostics.errors() <= Diagnostics::MaximumErrors, "nobody reads more errors than that");
}

void checkIds(const StructType& type)
{
    std::vector<std::uint32_t> ids;
    for (const Member* const member : allMembers(type)) {
        ids.push_back(member->id);
        check(member->id <= 0x0FFFFFFF, "ids take 28 bits");
    }
    std::ranges::sort(ids);
    check(std::ranges::adjacent_find(ids) == ids.end(), "ids are unique");
}

void checkModel(const Model& model)
{
    for (const NamedType* const type : model.types) {
        check(type->depth <= MaximumDepth, "types are not nested too deep");
        check(as<AliasType>(resolved(*type)) == nullptr, "aliases can be looked through");
        if (const auto* const structure = as<StructType>(*type)) {
            checkIds(*structure);
        } else if (const auto* const choice = as<UnionType>(*type)) {
            check(!choice->cases.empty(), "a union has cases");
        }
    }
    check(topics(model, TopicSelection::All).size() >= topics(model).size(), "topics are structs");
    check(toJson(model).ends_with("}\n"), "a model can be written");
}

} // namespace

/// There is a model exactly where there is no error, and the same text has the same outcome.
void run(std::span<const std::uint8_t> input)
{
    const std::string text(input.begin(), input.end());
    const ParseOptions options = optionsFor(text);
    const ParseResult result = parseText(text, "input.idl", options);
    check(result.model.has_value() == (result.diagnostics.errors() == 0), "a model or an error");
    checkDiagnostics(result.diagnostics, text);
    if (result.model) {
        checkModel(*result.model);
    }
    const ParseResult again = parseText(text, "input.idl", options);
    check(result.diagnostics.all() == again.diagnostics.all(), "the outcome is the same each time");
}

} // namespace plex::fuzz
