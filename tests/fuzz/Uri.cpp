// SPDX-License-Identifier: Apache-2.0
#include "Check.hpp"
#include "Target.hpp"

#include <plex/PlexException.hpp>
#include <plex/Uri.hpp>
#include <plex/dds/DdsUriHelper.hpp>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace plex::fuzz
{

namespace
{

using ovra::plex::DdsUriHelper;
using ovra::plex::Uri;
using Part = std::optional<std::string_view>;

constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view digits = "0123456789";
constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
constexpr std::string_view subDelimiters = "!$&'()*+,;=";

bool isOneOf(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

/// Whether text consists of unreserved characters, sub-delimiters, percent-escapes (RFC 3986, 2) and others.
bool consistsOf(std::string_view text, std::string_view others)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') {
            if (text.size() - i < 3 || !isOneOf(text[i + 1], hexDigits) || !isOneOf(text[i + 2], hexDigits)) {
                return false;
            }
            i += 2;
        } else if (!isOneOf(c, letters) && !isOneOf(c, digits) && !isOneOf(c, "-._~") &&
                   !isOneOf(c, subDelimiters) && !isOneOf(c, others)) {
            return false;
        }
    }
    return true;
}

bool isScheme(std::string_view text)
{
    return !text.empty() && isOneOf(text[0], letters) && std::ranges::all_of(text, [](char c) {
        return isOneOf(c, letters) || isOneOf(c, digits) || isOneOf(c, "+-.");
    });
}

/// A URI reference taken apart by RFC 3986, by hand.
struct Reference {
    Part scheme;
    Part authority;
    Part userInfo;
    Part host;
    Part port;
    std::string_view path;
    Part query;
    Part fragment;

    /// The parts as RFC 3986, appendix B, splits them; whether they are well-formed is another matter.
    /// @param text outlives this.
    explicit Reference(std::string_view text)
    {
        fragment = cutBehind(text, text.find('#'));
        query = cutBehind(text, text.find('?'));
        const auto colon = text.find_first_of(":/");
        if (colon != std::string_view::npos && text[colon] == ':') {
            scheme = text.substr(0, colon);
            text.remove_prefix(colon + 1);
        }
        if (text.starts_with("//")) {
            text.remove_prefix(2);
            authority = text.substr(0, text.find('/'));
            text.remove_prefix(authority->size());
            splitAuthority(*authority);
        }
        path = text;
    }

    /// Whether it is a URI whose host, where it has one, is a name.
    bool isWellFormed() const
    {
        return scheme && isScheme(*scheme) && consistsOf(userInfo.value_or(""), ":") &&
               consistsOf(host.value_or(""), "") &&
               std::ranges::all_of(port.value_or(""), [](char c) { return isOneOf(c, digits); }) &&
               consistsOf(path, "/:@") && consistsOf(query.value_or(""), "/:@?") &&
               consistsOf(fragment.value_or(""), "/:@?");
    }

private:
    /// Shortens a text to what stands before a position. @returns what stands behind it.
    static Part cutBehind(std::string_view& text, std::size_t position)
    {
        if (position == std::string_view::npos) {
            return std::nullopt;
        }
        const auto rest = text.substr(position + 1);
        text = text.substr(0, position);
        return rest;
    }

    void splitAuthority(std::string_view text)
    {
        const auto at = text.find('@');
        if (at != std::string_view::npos) {
            userInfo = text.substr(0, at);
            text.remove_prefix(at + 1);
        }
        port = cutBehind(text, text.find(':'));
        host = text;
    }
};

template <class View>
bool isPart(bool present, View view, const Part& expected)
{
    return present == expected.has_value() &&
           std::string_view(view.data(), view.size()) == expected.value_or("");
}

void checkParts(const Uri& uri, const Reference& reference)
{
    check(isPart(uri.has_scheme(), uri.scheme(), reference.scheme), "scheme");
    check(isPart(uri.has_authority(), uri.authority(), reference.authority), "authority");
    check(isPart(uri.has_user_info(), uri.user_info(), reference.userInfo), "user info");
    check(isPart(uri.has_host(), uri.host(), reference.host), "host");
    check(isPart(uri.has_port(), uri.port(), reference.port), "port");
    check(isPart(uri.has_path(), uri.path(), reference.path), "path");
    check(isPart(uri.has_query(), uri.query(), reference.query), "query");
    check(isPart(uri.has_fragment(), uri.fragment(), reference.fragment), "fragment");
}

std::string lower(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    return result;
}

std::string decoded(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%';
        result +=
            escape ? static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16)) : text[i];
        i += escape ? 2 : 0;
    }
    return result;
}

/// The number of a domain that the property "dds.domain" could hold, 0 where none is written.
std::optional<std::uint32_t> domainOf(std::string_view text)
{
    std::uint32_t domain = 0;
    for (const char c : text) {
        if (!isOneOf(c, digits)) {
            return std::nullopt;
        }
        domain = std::min<std::uint32_t>(domain * 10 + static_cast<std::uint32_t>(c - '0'), 1000);
    }
    return domain <= 232 ? std::optional(domain) : std::nullopt;
}

bool isDdsUri(const Reference& reference)
{
    if (!reference.isWellFormed()) {
        return false;
    }
    const std::string scheme = lower(reference.scheme.value_or(""));
    const std::string_view path = reference.path;
    const std::string topic = decoded(path.starts_with('/') ? path.substr(1) : path);
    return scheme.starts_with("dds+") && scheme.size() > 4 && reference.authority && !reference.userInfo &&
           !reference.port && !reference.query && !reference.fragment && reference.host &&
           domainOf(*reference.host) && !topic.empty() && topic.size() <= 255 &&
           topic.find('\0') == std::string::npos;
}

/// What checkUri() says; nothing where it is content. Any other exception ends the process.
std::optional<std::string> refusalOf(const Uri& uri)
{
    try {
        DdsUriHelper::checkUri(uri, false);
    } catch (const ovra::plex::PlexException& error) {
        return error.what();
    }
    return std::nullopt;
}

void checkRules(const Uri& uri, const Reference& reference)
{
    check(DdsUriHelper::isPubSubUri(uri) == (lower(reference.scheme.value_or("")) == "dds+ps"),
          "the scheme alone tells publish/subscribe");
    const auto refusal = refusalOf(uri);
    check(!refusal == isDdsUri(reference), "exactly what the rules allow is a DDS URI");
    if (refusal) {
        const std::string named = "Uri " + uri.string() + " is not a DDS Uri: it";
        check(refusal->starts_with(named.c_str()),
              "a rule is named"); // a host may hold a NUL, which ends what()
        return;
    }
    const auto topic = reference.path.substr(1);
    check(reference.host && DdsUriHelper::domain(uri, {}) == domainOf(*reference.host),
          "the domain is the authority");
    check(DdsUriHelper::topic(uri, false) == topic, "the topic is the path");
    check(DdsUriHelper::topic(uri, true) == decoded(topic), "its escapes are decoded");
}

std::optional<Uri> parsed(const std::string& text)
{
    try {
        return Uri(text);
    } catch (const network::uri_syntax_error&) {
        return std::nullopt;
    }
}

std::string_view withoutSpaceAround(std::string_view text)
{
    constexpr std::string_view space = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
    return text.substr(0, text.find_last_not_of(space) + 1);
}

} // namespace

/// The class holds more than RFC 3986 allows, and not all of it. No DDS URI is among what it lacks.
void run(std::span<const std::uint8_t> input)
{
    const std::string text(input.begin(), input.end());
    const Reference reference(withoutSpaceAround(text));
    const auto uri = parsed(text);
    check(uri.has_value() || !isDdsUri(reference), "every DDS URI can be held");
    if (!uri) {
        return;
    }
    check(uri->string() == withoutSpaceAround(text), "the text is kept, but for space around it");
    if (reference.authority && reference.isWellFormed()) {
        checkParts(*uri, reference);
        checkParts(Uri(*uri), reference);
    }
    checkRules(*uri, reference);
    checkRules(Uri(*uri), reference);
}

} // namespace plex::fuzz
