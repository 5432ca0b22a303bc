// SPDX-License-Identifier: Apache-2.0
// A small vocabulary for tests of the front end.
#pragma once

#include <plex/idl/Model.hpp>
#include <plex/idl/Parse.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace plex::test
{

using namespace ovra::plex::idl; // NOLINT(google-build-using-namespace): that is what is tested

/// Files that exist in the test only.
using Files = std::map<std::string, std::string>;

inline ParseOptions optionsWith(const Files& files)
{
    ParseOptions options;
    options.readFile = [files](const std::string& path) {
        const auto found = files.find(path);
        return found == files.end() ? std::nullopt : std::optional(found->second);
    };
    return options;
}

/// The model of a text in which nothing is wrong.
inline Model modelOf(const std::string& text, const ParseOptions& options = optionsWith({}))
{
    ParseResult result = parseText(text, "test.idl", options);
    EXPECT_EQ(toString(result.diagnostics), "");
    if (!result.model) {
        throw std::runtime_error("there is no model");
    }
    return std::move(*result.model);
}

/// What is wrong with a text, each as "line:column: message" or "file:line:column: message" of an included
/// file.
inline std::vector<std::string> complaintsOf(const std::string& text,
                                             const ParseOptions& options = optionsWith({}))
{
    std::vector<std::string> complaints;
    const ParseResult result = parseText(text, "test.idl", options);
    for (const Diagnostic& diagnostic : result.diagnostics.all()) {
        complaints.push_back((diagnostic.file == "test.idl" ? "" : diagnostic.file + ":") +
                             std::to_string(diagnostic.line) + ":" + std::to_string(diagnostic.column) +
                             ": " + diagnostic.message);
    }
    return complaints;
}

/// A type of a model by its scoped name.
template <class T>
const T& typeIn(const Model& model, std::string_view name)
{
    const NamedType* const type = model.findType(name);
    const T* const wanted = type == nullptr ? nullptr : as<T>(*type);
    if (wanted == nullptr) {
        throw std::runtime_error("there is no such type: " + std::string(name));
    }
    return *wanted;
}

inline const Member& memberOf(const StructType& type, std::string_view name)
{
    for (const Member& member : type.members) {
        if (member.name == name) {
            return member;
        }
    }
    throw std::runtime_error("there is no such member: " + std::string(name));
}

/// The value of `const TYPE VALUE = EXPRESSION;`, as it is written.
inline std::string valueOf(const std::string& type, const std::string& expression,
                           const std::string& before = {})
{
    const Model model = modelOf(before + " const " + type + " VALUE = " + expression + ";");
    return toString(model.findConstant("VALUE")->value);
}

} // namespace plex::test
