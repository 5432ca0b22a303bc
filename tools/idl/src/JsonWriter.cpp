// SPDX-License-Identifier: Apache-2.0
#include "JsonWriter.hpp"

#include "Text.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

void JsonWriter::newLine()
{
    text_ += '\n';
    text_.append(2 * depth_, ' ');
}

/// What stands before a value.
void JsonWriter::begin()
{
    if (!afterKey_ && depth_ > 0) {
        text_ += isFirst_ ? "" : ",";
        newLine();
    }
    afterKey_ = false;
    isFirst_ = false;
}

void JsonWriter::open(char bracket)
{
    begin();
    text_ += bracket;
    ++depth_;
    isFirst_ = true;
}

void JsonWriter::close(char bracket)
{
    --depth_;
    if (!isFirst_) {
        newLine();
    }
    text_ += bracket;
    isFirst_ = false;
}

void JsonWriter::beginObject()
{
    open('{');
}

void JsonWriter::endObject()
{
    close('}');
}

void JsonWriter::beginArray()
{
    open('[');
}

void JsonWriter::endArray()
{
    close(']');
}

void JsonWriter::key(std::string_view name)
{
    begin();
    quote(name);
    text_ += ": ";
    afterKey_ = true;
}

void JsonWriter::string(std::string_view text)
{
    begin();
    quote(text);
}

void JsonWriter::literal(std::string_view text)
{
    begin();
    text_ += text;
}

/// A string in quotation marks; bytes that are not UTF-8 become U+FFFD.
void JsonWriter::quote(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    text_ += '"';
    while (!text.empty()) {
        const std::size_t size = characterSize(text);
        const auto byte = static_cast<unsigned char>(text[0]);
        if (size == 0) {
            text_ += "\\ufffd";
        } else if (text[0] == '"' || text[0] == '\\') {
            text_ += '\\';
            text_ += text[0];
        } else if (text[0] == '\n') {
            text_ += "\\n";
        } else if (byte < ' ') {
            text_ += "\\u00";
            text_ += digits[byte >> 4U];
            text_ += digits[byte & 15U];
        } else {
            text_ += text.substr(0, size);
        }
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    text_ += '"';
}

} // namespace ovra::plex::idl
