// SPDX-License-Identifier: Apache-2.0
#include "Context.hpp"
#include "Parser.hpp"
#include "Preprocessor.hpp"
#include "Reporter.hpp"
#include "Source.hpp"

#include <plex/idl/Parse.hpp>

#include <filesystem>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

void addWithoutPlace(Diagnostics& diagnostics, const std::string& file, const std::string& message)
{
    diagnostics.add({Severity::Error, file, 0, 0, message, {}, {}});
}

void parseInto(ParseResult& result, Sources& sources, const ParseOptions& options)
{
    Reporter reporter(sources, result.diagnostics);
    Preprocessor preprocessor(sources, reporter, options.includeDirectories);
    for (const std::string& definition : options.definitions) {
        if (!preprocessor.define(definition)) {
            addWithoutPlace(result.diagnostics, {},
                            "\"" + definition + "\" is no definition: NAME or NAME=VALUE");
        }
    }
    TokenCursor tokens(preprocessor.run(), reporter);
    ModelBuilder builder;
    Context context{tokens, reporter, builder, options, {}, nullptr, {}, {}, 0};
    Parser(context).parse();
    if (result.diagnostics.errors() == 0) {
        result.model = builder.finish(sources.files());
    }
}

ParseResult parseNamed(Sources& sources, const ParseOptions& options)
{
    ParseResult result;
    try {
        parseInto(result, sources, options);
    } catch (const TooManyErrors&) {
        result.model.reset();
    }
    return result;
}

} // namespace

ParseResult parseFile(const std::string& path, const ParseOptions& options)
{
    return parseFiles({path}, options);
}

ParseResult parseFiles(const std::vector<std::string>& paths, const ParseOptions& options)
{
    Sources sources(options.readFile);
    ParseResult unreadable;
    for (const std::string& path : paths) {
        if (!sources.load(path)) {
            addWithoutPlace(unreadable.diagnostics, path, "cannot read the file");
        }
    }
    return unreadable.diagnostics.errors() == 0 && !paths.empty() ? parseNamed(sources, options)
                                                                  : std::move(unreadable);
}

ParseResult parseText(const std::string& text, const std::string& name, const ParseOptions& options)
{
    Sources sources(options.readFile);
    sources.add(name, text);
    return parseNamed(sources, options);
}

} // namespace ovra::plex::idl
