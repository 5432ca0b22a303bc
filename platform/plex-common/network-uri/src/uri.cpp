// SPDX-License-Identifier: Apache-2.0
#include <network/uri.hpp>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace network
{

namespace
{

constexpr std::string_view space = " \t\n\v\f\r";
constexpr std::string_view hexLetters = "abcdefABCDEF";

// What parts may have besides letters, digits and, but for the scheme, percent-escapes (RFC 3986, 2 and 3).
constexpr std::string_view inScheme = "+-.";
constexpr std::string_view inUserInfo = "-._~!$&'()*+,;=:";
constexpr std::string_view inPath = "-._~!$&'()*+,;=:@/";
constexpr std::string_view inQuery = "-._~!$&'()*+,;=:@/?"; // and in a fragment

class SyntaxCategory final : public std::error_category
{
public:
    const char* name() const noexcept override { return "uri_error"; }

    std::string message(int /*value*/) const override { return "Unable to parse URI string."; }
};

std::error_code syntaxError()
{
    static const SyntaxCategory category;
    return {1, category};
}

void require(bool holds)
{
    if (!holds) {
        throw uri_syntax_error();
    }
}

bool isOneOf(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isDigit(c) || isOneOf(c, hexLetters);
}

bool isScheme(std::string_view text)
{
    return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, [](char c) {
        return isLetter(c) || isDigit(c) || isOneOf(c, inScheme);
    });
}

bool isEscape(std::string_view text)
{
    return text.size() >= 3 && text[0] == '%' && isHexDigit(text[1]) && isHexDigit(text[2]);
}

bool consistsOf(std::string_view text, std::string_view marks)
{
    while (!text.empty()) {
        const char c = text.front();
        const bool single = isLetter(c) || isDigit(c) || isOneOf(c, marks);
        if (!single && !isEscape(text)) {
            return false;
        }
        text.remove_prefix(single ? 1 : 3);
    }
    return true;
}

std::string withoutSpaceAround(const std::string& text)
{
    const auto first = text.find_first_not_of(space);
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(space) + 1 - first);
}

} // namespace

uri_syntax_error::uri_syntax_error() : std::system_error(syntaxError()) {}

uri_syntax_error::~uri_syntax_error() = default;

/// Takes a text apart, from left to right.
class uri::Parser
{
public:
    explicit Parser(const std::string& text) : text_(text) {}

    Parts parse()
    {
        takeScheme();
        if (text_.compare(at_, 2, "//") == 0) {
            at_ += 2;
            takeAuthority();
            parts_.path = take(find("?#"));
            require(consistsOf(view(parts_.path), inPath));
        } else {
            takePathWithoutAuthority();
        }
        if (skip('?')) {
            parts_.query = take(find("#"));
            require(consistsOf(view(parts_.query), inQuery));
        }
        if (skip('#')) {
            parts_.fragment = take(text_.size());
            require(consistsOf(view(parts_.fragment), inQuery));
        }
        return parts_;
    }

private:
    void takeScheme()
    {
        parts_.scheme = take(find(":"));
        require(isScheme(view(parts_.scheme)) && skip(':'));
    }

    /// Its first character, or the one behind its slash, may be any, even one that begins a query elsewhere.
    void takePathWithoutAuthority()
    {
        const std::size_t checked = at_ + (comes('/') ? 2 : 1);
        if (checked <= text_.size()) {
            parts_.path = take(find("?#", checked));
            require(consistsOf(std::string_view(text_).substr(checked, at_ - checked), inPath));
        }
    }

    void takeAuthority()
    {
        require(at_ < text_.size() && !comes('@') && !comes(':'));
        const Part front = take(find("@[/?#"));
        if (comes('@')) {
            takeUserInfo(front);
        } else if (comes('[')) {
            takeAddress(); // what stands before it belongs to no part
        } else {
            takeHostAndPort(front);
        }
        const Part& first = parts_.userInfo.present ? parts_.userInfo : parts_.host;
        const Part& last = parts_.port.present ? parts_.port : parts_.host;
        parts_.authority = {first.begin, last.begin + last.size - first.begin, true};
    }

    /// And the host and port behind it.
    void takeUserInfo(const Part& front)
    {
        require(consistsOf(view(front), inUserInfo) && skip('@') && at_ < text_.size() && !comes(':'));
        parts_.userInfo = front;
        if (comes('[')) {
            takeAddress();
        } else {
            parts_.host = take(find(":/?#"));
            takePort();
        }
    }

    /// An address in brackets, or what begins like one: all of the rest, where no bracket ends it.
    void takeAddress()
    {
        std::size_t end = at_;
        do {
            end = std::min(text_.find(']', end), text_.size() - 1) + 1;
        } while (end < text_.size() && !isOneOf(text_[end], ":/?#"));
        parts_.host = take(end);
        takePort();
    }

    void takePort()
    {
        if (skip(':')) {
            parts_.port = take(find("/"));
            require(std::ranges::all_of(view(parts_.port), isDigit) && hasPortNumber());
        }
    }

    /// Where neither user info nor brackets are, both may hold any characters.
    void takeHostAndPort(const Part& front)
    {
        const auto colon = view(front).rfind(':');
        if (colon == std::string_view::npos) {
            parts_.host = front;
        } else {
            parts_.host = {front.begin, colon, true};
            parts_.port = {front.begin + colon + 1, front.size - colon - 1, true};
            require(hasPortNumber());
        }
    }

    /// Whether the port begins with a number that is small enough, or with none.
    bool hasPortNumber() const
    {
        return std::strtoul(text_.c_str() + parts_.port.begin, nullptr, 10) <
               std::numeric_limits<unsigned short>::max();
    }

    /// Where the first of these characters stands, or the end of the text.
    std::size_t find(const char* characters, std::size_t from) const
    {
        return std::min(text_.find_first_of(characters, from), text_.size());
    }

    std::size_t find(const char* characters) const { return find(characters, at_); }

    Part take(std::size_t end)
    {
        const Part part{at_, end - at_, true};
        at_ = end;
        return part;
    }

    bool comes(char character) const { return at_ < text_.size() && text_[at_] == character; }

    /// Whether the character came, which is left behind then.
    bool skip(char character)
    {
        const bool came = comes(character);
        at_ += came ? 1 : 0;
        return came;
    }

    std::string_view view(const Part& part) const
    {
        return std::string_view(text_).substr(part.begin, part.size);
    }

    const std::string& text_;
    std::size_t at_ = 0;
    Parts parts_;
};

void uri::parse(const std::string& text)
{
    text_ = withoutSpaceAround(text);
    if (!text_.empty()) {
        parts_ = Parser(text_).parse();
    }
}

} // namespace network
