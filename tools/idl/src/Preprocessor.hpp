// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Reporter.hpp"
#include "Source.hpp"
#include "Token.hpp"

#include <deque>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace ovra::plex::idl
{

/// A documentation comment between two tokens.
struct DocumentationComment {
    std::string_view text;
    std::size_t before = 0; ///< index of the token that follows
    bool trailing = false;  ///< it belongs to what stands before
};

/// What is left once includes, macros and conditions are carried out.
struct PreprocessedText {
    std::vector<Token> tokens;                  ///< the last one is the end
    std::vector<DocumentationComment> comments; ///< in the order of the text
    std::set<std::pair<std::uint32_t, std::uint32_t>>
        faultyLines;     ///< by file: what is missing there may be due to what was reported of them
    bool isWhole = true; ///< nothing was reported that hides what follows
};

/// Carries out `#include`, `#define` of names without parameters, `#undef`, conditions, `#error` and `#pragma
/// once`.
class Preprocessor
{
public:
    Preprocessor(Sources& sources, Reporter& reporter, const std::vector<std::string>& includeDirectories)
        : sources_(sources)
        , reporter_(reporter)
        , includeDirectories_(includeDirectories)
    {
    }

    /// Defines "NAME" or "NAME=VALUE". @returns false where it is neither.
    bool define(const std::string& definition);

    /// The text of the files that were named, in their order, each once: what is also included by one before
    /// it is not repeated.
    PreprocessedText run();

private:
    struct Macro {
        std::vector<Token> replacement;
        Location place;
        bool expanding = false;
    };

    /// An #if under way.
    struct Group {
        Location place;
        bool enclosingActive = true;
        bool active = false; ///< what stands here counts
        bool taken = false;  ///< one of its branches counted
        bool sawElse = false;
    };

    using Line = std::vector<Token>; ///< of a directive, without #

    void processFile(std::uint32_t file);
    const std::vector<Token>& tokensOf(std::uint32_t file);
    bool isText(std::uint32_t file);
    void process(const Token& token);
    void emit(const Token& token);
    void reportFault(const Token& token);
    void expand(const Token& token, const Token& use, std::vector<Token>& result);
    void directive(const Token& token);
    bool conditional(const Token& name, const Line& line);
    void beginGroup(const Token& name, bool holds);
    void continueGroup(const Token& name, const Line& line);
    void endGroup(const Token& name);

    bool isActive() const { return groups_.empty() || groups_.back().active; }

    bool evaluate(const Token& name, const Line& line);
    std::optional<bool> isDefined(const Line& line, std::size_t& i);
    bool isDefinedName(const Token& name, const Line& line);
    void include(const Token& name, const Line& line);
    std::optional<std::uint32_t> find(const std::string& name, bool quoted, std::uint32_t includer);
    void defineMacro(const Token& name, const Line& line);
    void undefine(const Token& name, const Line& line);
    void pragma(const Token& name, const Line& line);
    void other(const Token& name, const Line& line);

    Sources& sources_;
    Reporter& reporter_;
    const std::vector<std::string>& includeDirectories_;
    std::unordered_map<std::string, Macro> macros_;
    std::deque<std::string> definitions_;                          ///< texts that tokens of macros view
    std::unordered_map<std::uint32_t, std::vector<Token>> tokens_; ///< of files, as the lexer cut them
    std::vector<Group> groups_;
    PreprocessedText result_;
    std::uint32_t named_ = 0;  ///< files, which come before those that are included
    std::size_t expanded_ = 0; ///< tokens that came from macros
    int macroDepth_ = 0;
    int includeDepth_ = 0;
    std::size_t includes_ = 0;
};

} // namespace ovra::plex::idl
