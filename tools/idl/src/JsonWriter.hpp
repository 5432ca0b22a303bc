// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ovra::plex::idl
{

/// Puts JSON together, one value a line.
class JsonWriter
{
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();

    /// The key of the value that comes next.
    void key(std::string_view name);

    void string(std::string_view text);

    /// A number, `true`, `false` or `null`.
    void literal(std::string_view text);

    void member(std::string_view name, std::string_view text)
    {
        key(name);
        string(text);
    }

    void number(std::string_view name, std::uint64_t value)
    {
        key(name);
        literal(std::to_string(value));
    }

    /// A member that is left out where it does not hold.
    void mark(std::string_view name, bool holds)
    {
        if (holds) {
            key(name);
            literal("true");
        }
    }

    /// A member that is left out where the text is empty.
    void text(std::string_view name, std::string_view value)
    {
        if (!value.empty()) {
            member(name, value);
        }
    }

    /// The text, with an end of line.
    std::string finish() { return text_ + "\n"; }

private:
    void begin();
    void open(char bracket);
    void close(char bracket);
    void newLine();
    void quote(std::string_view text);

    std::string text_;
    std::size_t depth_ = 0;
    bool isFirst_ = true;
    bool afterKey_ = false;
};

} // namespace ovra::plex::idl
