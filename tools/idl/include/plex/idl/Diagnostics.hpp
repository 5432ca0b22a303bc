// SPDX-License-Identifier: Apache-2.0
// What is wrong with an interface definition, and where: for people, in the form that editors understand.
// Plain values: any thread may use its own, and they refer to nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ovra::plex::idl
{

enum class Severity : std::uint8_t { Warning, Error };

/// One complaint.
struct Diagnostic {
    Severity severity = Severity::Error;
    std::string file;       ///< as it was named, or as the include found it; empty where no file is concerned
    std::uint32_t line = 0; ///< from 1
    std::uint32_t column = 0; ///< from 1, in characters
    std::string message;
    std::string hint;       ///< what to do about it; may be empty
    std::string sourceLine; ///< the text of the line; may be empty

    bool operator==(const Diagnostic&) const = default;
};

/// `file:line:column: error: message`, then the line, a caret below the place and the hint, each on lines of
/// their own. The last one has no end of line.
std::string toString(const Diagnostic& diagnostic);

/// The complaints about a file and what it includes, in the order in which they were found.
class Diagnostics
{
public:
    /// After so many errors the rest is not looked at.
    static constexpr std::size_t MaximumErrors = 100;

    void add(Diagnostic diagnostic);

    const std::vector<Diagnostic>& all() const { return all_; }

    std::size_t errors() const { return errors_; }

    std::size_t warnings() const { return all_.size() - errors_; }

    bool areTooMany() const { return errors_ >= MaximumErrors; }

private:
    std::vector<Diagnostic> all_;
    std::size_t errors_ = 0;
};

/// All of them as text, each followed by an end of line.
std::string toString(const Diagnostics& diagnostics);

} // namespace ovra::plex::idl
