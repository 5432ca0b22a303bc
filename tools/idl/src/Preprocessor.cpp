// SPDX-License-Identifier: Apache-2.0
#include "Preprocessor.hpp"

#include "Condition.hpp"
#include "Lexer.hpp"
#include "Text.hpp"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace ovra::plex::idl
{

namespace
{

constexpr int deepestInclude = 64;
constexpr int deepestMacro = 64;
constexpr std::size_t mostIncludes = 20000;
constexpr std::size_t mostTokens = 20'000'000;
constexpr std::size_t mostExpanded = 1'000'000;

/// Thrown where going on would take too much.
struct Abandoned {
};

bool isWord(const std::vector<Token>& line, std::size_t i)
{
    return i < line.size() && line[i].isName();
}

/// What a literal could have been, so that its fault is the only one.
Token standInFor(const Token& token)
{
    Token result = token;
    result.fault = nullptr;
    switch (token.kind) {
    case TokenKind::Word:
    case TokenKind::EscapedWord:
        break;
    case TokenKind::String:
    case TokenKind::WideString:
        result.text = token.kind == TokenKind::String ? R"("")" : R"(L"")";
        break;
    case TokenKind::Character:
    case TokenKind::WideCharacter:
        result.text = token.kind == TokenKind::Character ? "'?'" : "L'?'";
        break;
    default:
        result.text = "1";
    }
    return result;
}

/// A name as it is written: the underscore of an escaped one belongs to a macro's name.
std::string nameOf(const Token& token)
{
    return (token.kind == TokenKind::EscapedWord ? "_" : "") + std::string(token.text);
}

/// The name of the file in `"…"` or `<…>`, as it is written.
std::string fileNameIn(const std::vector<Token>& line)
{
    const Token& first = line.front();
    if (first.kind == TokenKind::String && first.fault == nullptr) {
        return std::string(first.text.substr(1, first.text.size() - 2));
    }
    const Token& last = line.size() > 2 ? line[line.size() - 2] : first;
    if (!first.is("<") || !last.is(">")) {
        return {};
    }
    const char* const begin = first.text.data() + 1; // tokens of a line view one text
    return {begin, static_cast<std::size_t>(last.text.data() - begin)};
}

} // namespace

bool Preprocessor::define(const std::string& definition)
{
    const std::size_t equals = std::min(definition.find('='), definition.size());
    const std::string name = definition.substr(0, equals);
    const bool isName = !name.empty() && isWordStart(name[0]) && std::ranges::all_of(name, isWordPart);
    if (!isName || definition.find('\n') != std::string::npos) {
        return false;
    }
    const std::string& value =
        definitions_.emplace_back(equals == definition.size() ? "1" : definition.substr(equals + 1));
    Macro macro;
    macro.replacement = Lexer(value, {0, 0, 1}).tokensOfLine();
    macro.replacement.pop_back(); // the end
    macros_[name] = std::move(macro);
    return true;
}

PreprocessedText Preprocessor::run()
{
    named_ = sources_.count();
    try {
        for (std::uint32_t file = 0; file < named_; ++file) {
            if (!tokens_.contains(file)) {
                processFile(file);
            }
        }
    } catch (const Abandoned&) {
        groups_.clear(); // the error was reported
        result_.isWhole = false;
    }
    result_.tokens.push_back(tokensOf(named_ - 1).back());
    return std::move(result_);
}

const std::vector<Token>& Preprocessor::tokensOf(std::uint32_t file)
{
    const auto [known, isNew] = tokens_.try_emplace(file);
    if (isNew) {
        const std::string_view text = sources_[file].text;
        known->second = Lexer(isText(file) ? text : text.substr(text.size()), {file, 1, 1}).tokens();
    }
    return known->second;
}

/// Whether a file can be read as text at all; says so where it can not.
bool Preprocessor::isText(std::uint32_t file)
{
    const std::string_view text = sources_[file].text;
    const bool isWide = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
    const std::size_t nul = text.find('\0');
    if (!isWide && nul == std::string_view::npos) {
        return true;
    }
    const std::string_view before = text.substr(0, isWide ? 0 : nul);
    const auto line = static_cast<std::uint32_t>(std::ranges::count(before, '\n') + 1);
    const std::size_t begin = before.rfind('\n') + 1;
    reporter_.error({file, line, characterCount(before.substr(begin)) + 1},
                    isWide ? "the file is UTF-16" : "a definition has no NUL, so this file is none",
                    "definitions are text in UTF-8");
    result_.isWhole = false;
    return false;
}

void Preprocessor::processFile(std::uint32_t file)
{
    if (sources_[file].isTooLarge) {
        reporter_.error({file, 0, 0},
                        "the file is larger than " + std::to_string(Source::LargestText / 1'000'000) + " MB");
        throw Abandoned();
    }
    const auto outer = std::exchange(groups_, {});
    for (const Token& token : tokensOf(file)) {
        process(token);
    }
    for (const Group& group : groups_) {
        reporter_.error(group.place, "this condition has no #endif");
        result_.isWhole = false;
    }
    groups_ = outer;
}

void Preprocessor::process(const Token& token)
{
    if (token.kind == TokenKind::Directive) {
        directive(token);
        return;
    }
    if (!isActive() || token.kind == TokenKind::End) {
        return;
    }
    if (token.isName() && macros_.contains(nameOf(token))) {
        std::vector<Token> expansion;
        expand(token, token, expansion);
        std::ranges::for_each(expansion, [this](const Token& part) { emit(part); });
        return;
    }
    emit(token);
}

void Preprocessor::reportFault(const Token& token)
{
    Location place = token.place;
    if (token.isName()) { // what is wrong is within it
        const auto foreign = std::ranges::find_if(token.text, isForeign) - token.text.begin();
        const std::uint32_t column =
            static_cast<std::uint32_t>(foreign) + (token.kind == TokenKind::EscapedWord ? 1 : 0);
        place.column += std::min(column, token.width - 1);
    }
    reporter_.error(place, token.fault);
    result_.faultyLines.emplace(place.file, place.line);
    result_.isWhole = result_.isWhole && !token.text.starts_with("/*");
}

/// Hands a token on; comments go beside.
void Preprocessor::emit(const Token& token)
{
    if (token.fault != nullptr) {
        reportFault(token);
        emit(standInFor(token));
        return;
    }
    switch (token.kind) {
    case TokenKind::Invalid:
        return;
    case TokenKind::Comment:
    case TokenKind::TrailingComment:
        result_.comments.push_back(
            {token.text, result_.tokens.size(), token.kind == TokenKind::TrailingComment});
        return;
    case TokenKind::CommentAnnotation:
        reporter_.warn(token.place, "an annotation in a comment has no effect",
                       "write it before what it is about, as in \"@key long id;\"");
        return;
    default:
        result_.tokens.push_back(token);
    }
    if (result_.tokens.size() > mostTokens) {
        reporter_.error(token.place, "the text is too long with all that it includes");
        throw Abandoned();
    }
}

/// Replaces a name by what its macro means, and the names in that likewise. @param use where all of it
/// stands.
void Preprocessor::expand(const Token& token, const Token& use, std::vector<Token>& result)
{
    const auto found = token.isName() ? macros_.find(nameOf(token)) : macros_.end();
    if (found == macros_.end() || found->second.expanding) {
        Token part = token;
        part.place = use.place;
        part.width = use.width;
        result.push_back(part);
        if (++expanded_ > mostExpanded) {
            reporter_.error(use.place, "macros expand to too much");
            throw Abandoned();
        }
        return;
    }
    if (macroDepth_ == deepestMacro) {
        reporter_.error(use.place, "macros are nested more than " + std::to_string(deepestMacro) + " deep");
        throw Abandoned();
    }
    ++macroDepth_;
    found->second.expanding = true;
    for (const Token& part : found->second.replacement) {
        expand(part, use, result);
    }
    found->second.expanding = false;
    --macroDepth_;
}

void Preprocessor::directive(const Token& token)
{
    Location start = token.place;
    ++start.column;
    Line line = Lexer(token.text.substr(1), start).tokensOfLine();
    std::erase_if(line, [](const Token& part) {
        return part.kind == TokenKind::Comment || part.kind == TokenKind::TrailingComment ||
               part.kind == TokenKind::CommentAnnotation;
    });
    const Token name = line.front();
    if (name.kind == TokenKind::End) {
        return; // # alone does nothing
    }
    line.erase(line.begin());
    if (conditional(name, line) || !isActive()) {
        return;
    }
    if (name.is("include")) {
        include(name, line);
    } else if (name.is("define")) {
        defineMacro(name, line);
    } else if (name.is("undef")) {
        undefine(name, line);
    } else if (name.is("pragma")) {
        pragma(name, line);
    } else {
        other(name, line);
    }
}

// --- Conditions --------------------------------------------------------------------------------------------

/// Carries out a directive of a condition. @returns false where it is none.
bool Preprocessor::conditional(const Token& name, const Line& line)
{
    if (name.is("if")) {
        beginGroup(name, isActive() && evaluate(name, line));
    } else if (name.is("ifdef")) {
        beginGroup(name, isActive() && isDefinedName(name, line));
    } else if (name.is("ifndef")) {
        beginGroup(name, isActive() && !isDefinedName(name, line));
    } else if (name.is("elif") || name.is("else")) {
        continueGroup(name, line);
    } else if (name.is("endif")) {
        endGroup(name);
    } else {
        return false;
    }
    return true;
}

void Preprocessor::beginGroup(const Token& name, bool holds)
{
    groups_.push_back({name.place, isActive(), isActive() && holds, isActive() && holds, false});
}

void Preprocessor::continueGroup(const Token& name, const Line& line)
{
    if (groups_.empty() || groups_.back().sawElse) {
        reporter_.error(name.place,
                        "#" + std::string(name.text) + (groups_.empty() ? " without #if" : " after #else"));
        return;
    }
    Group& group = groups_.back();
    group.sawElse = name.is("else");
    const bool mayHold = group.enclosingActive && !group.taken;
    group.active = mayHold && (group.sawElse || evaluate(name, line));
    group.taken = group.taken || group.active;
}

void Preprocessor::endGroup(const Token& name)
{
    if (groups_.empty()) {
        reporter_.error(name.place, "#endif without #if");
        return;
    }
    groups_.pop_back();
}

/// Whether `defined NAME` or `defined(NAME)` holds; nothing after reporting that it is neither.
/// @param i of `defined`; that of its last token afterwards.
std::optional<bool> Preprocessor::isDefined(const Line& line, std::size_t& i)
{
    const bool inParentheses = line[i + 1].is("(");
    const std::size_t at = i + (inParentheses ? 2 : 1);
    if (!isWord(line, at) || (inParentheses && !line[at + 1].is(")"))) {
        reporter_.error(line[i].end(), "\"defined\" needs the name of a macro");
        return std::nullopt;
    }
    i = at + (inParentheses ? 1 : 0);
    return macros_.contains(nameOf(line[at]));
}

bool Preprocessor::evaluate(const Token& name, const Line& line)
{
    Line replaced;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i].is("defined") && i + 1 < line.size()) {
            Token token = line[i];
            const auto holds = isDefined(line, i);
            if (!holds) {
                return false;
            }
            token.kind = TokenKind::Integer;
            token.text = *holds ? "1" : "0";
            replaced.push_back(token);
        } else {
            expand(line[i], line[i], replaced);
        }
    }
    if (replaced.size() == 1) {
        reporter_.error(name.end(), "the condition is missing");
        return false;
    }
    const auto result = evaluateCondition(replaced);
    if (!result.fault.empty()) {
        reporter_.error(result.place, result.fault);
    }
    return result.holds;
}

bool Preprocessor::isDefinedName(const Token& name, const Line& line)
{
    if (!isWord(line, 0)) {
        reporter_.error(name.end(), "the name of a macro is missing");
        return false;
    }
    return macros_.contains(nameOf(line[0]));
}

// --- Includes ----------------------------------------------------------------------------------------------

std::optional<std::uint32_t> Preprocessor::find(const std::string& name, bool quoted, std::uint32_t includer)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> folders;
    if (quoted) {
        folders.push_back(fs::path(sources_[includer].path).parent_path());
    }
    folders.insert(folders.end(), includeDirectories_.begin(), includeDirectories_.end());
    if (!quoted) {
        folders.push_back(fs::path(sources_[includer].path).parent_path());
    }
    for (const auto& folder : folders) {
        if (const auto file =
                sources_.load((folder / name).lexically_normal().string(), Sources::Role::Included)) {
            return file;
        }
    }
    return std::nullopt;
}

void Preprocessor::include(const Token& name, const Line& line)
{
    const std::string wanted = fileNameIn(line);
    if (wanted.empty() || wanted.find('\0') != std::string::npos) {
        reporter_.error(line.front().kind == TokenKind::End ? name.end() : line.front().place,
                        "#include needs the name of a file as \"file\" or <file>");
        return;
    }
    if (line.front().kind == TokenKind::String && line.size() > 2) {
        reporter_.warn(line[1].place, "what follows the name of the file has no effect");
    }
    const auto file = find(wanted, line.front().kind == TokenKind::String, name.place.file);
    if (!file) {
        reporter_.error(line.front().place, "cannot find the file \"" + wanted + "\"",
                        "it is searched beside the including file and in the folders given with -I");
        return;
    }
    const bool isNamedAndDone = named_ > 1 && *file < named_ && tokens_.contains(*file);
    if (sources_[*file].once || isNamedAndDone) {
        return;
    }
    if (includeDepth_ == deepestInclude || includes_ == mostIncludes) {
        reporter_.error(line.front().place,
                        includeDepth_ == deepestInclude
                            ? "files include one another more than " + std::to_string(deepestInclude) +
                                  " deep"
                            : "more than " + std::to_string(mostIncludes) + " includes",
                        "does " + sources_[*file].path +
                            " include itself? Guard it with #ifndef, #define and #endif, or #pragma once");
        throw Abandoned();
    }
    ++includes_;
    ++includeDepth_;
    processFile(*file);
    --includeDepth_;
}

// --- Macros and the rest -----------------------------------------------------------------------------------

void Preprocessor::defineMacro(const Token& name, const Line& line)
{
    if (!isWord(line, 0)) {
        reporter_.error(name.end(), "the name of a macro is missing");
        return;
    }
    const Token& macroName = line[0];
    const char* const end = macroName.text.data() + macroName.text.size();
    if (line[1].is("(") && line[1].text.data() == end) {
        reporter_.error(line[1].place, "macros with parameters are not supported",
                        "define a constant: const long NAME = VALUE;");
        return;
    }
    Macro macro;
    macro.place = macroName.place;
    macro.replacement.assign(line.begin() + 1, line.end() - 1);
    const auto [known, isNew] = macros_.try_emplace(nameOf(macroName), macro);
    const auto isSame = [](const Token& a, const Token& b) {
        return a.text == b.text;
    };
    if (!isNew && !std::ranges::equal(known->second.replacement, macro.replacement, isSame)) {
        reporter_.warn(macroName.place, "the macro " + nameOf(macroName) + " gets another meaning",
                       known->second.place.line == 0
                           ? "it is defined on the command line"
                           : "it is defined at " + reporter_.name(known->second.place));
    }
    known->second = std::move(macro);
}

void Preprocessor::undefine(const Token& name, const Line& line)
{
    if (!isWord(line, 0)) {
        reporter_.error(name.end(), "the name of a macro is missing");
        return;
    }
    macros_.erase(nameOf(line[0]));
}

void Preprocessor::pragma(const Token& name, const Line& line)
{
    if (line[0].is("once")) {
        sources_[name.place.file].once = true;
        return;
    }
    if (line[0].is("keylist")) {
        reporter_.error(line[0].place, "key lists are not supported",
                        "write @key before each member of the key");
        return;
    }
    reporter_.warn(name.place, "#pragma " + std::string(line[0].text) + " has no effect");
}

void Preprocessor::other(const Token& name, const Line& line)
{
    const char* const begin = name.text.data() + name.text.size();
    const Token& end = line.back();
    const std::string text(
        trimmed(std::string_view(begin, static_cast<std::size_t>(end.text.data() - begin))));
    if (name.is("error")) {
        reporter_.error(name.place, "#error " + text);
    } else if (name.is("warning")) {
        reporter_.warn(name.place, "#warning " + text);
    } else if (name.kind != TokenKind::Integer && !name.is("line") && !name.is("ident")) {
        reporter_.error(name.place, "unknown directive #" + std::string(name.text));
    }
}

} // namespace ovra::plex::idl
