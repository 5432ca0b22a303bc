// SPDX-License-Identifier: Apache-2.0
#include <plex/common/Properties.hpp>
#include <plex/dds/DdsUriHelper.hpp>

#include <boost/url/pct_string_view.hpp>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace ovra::plex
{

namespace
{

constexpr std::uint32_t maxDomain = 232;
constexpr std::size_t maxTopicLength = 255;

/// URI schemes know no case (RFC 3986, 3.1).
std::string lowerScheme(const Uri& uri)
{
    const auto written = uri.scheme();
    std::string scheme(written.begin(), written.end());
    std::ranges::transform(scheme, scheme.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return scheme;
}

std::optional<std::uint32_t> parseDomain(const std::string& digits)
{
    std::uint32_t domain = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, domain);
    return error == std::errc{} && rest == end && domain <= maxDomain ? std::optional(domain) : std::nullopt;
}

/// What stands behind "<scheme>://", as written: the authority, and where nothing else follows, the path.
///
/// It comes from the text, and not from host() and path(): with a bracket amid the authority, cpp-netlib's
/// class drops what stands before it, and finds other parts in a copy than in the URI.
std::string behindScheme(const Uri& uri)
{
    return uri.string().substr(uri.scheme().size() + 3);
}

std::string authority(const Uri& uri)
{
    const std::string written = behindScheme(uri);
    return written.substr(0, written.find('/'));
}

/// The path without its leading slash, as written.
std::string encodedTopic(const Uri& uri)
{
    const std::string written = behindScheme(uri);
    const auto slash = written.find('/');
    return slash == std::string::npos ? std::string() : written.substr(slash + 1);
}

std::string decoded(const std::string& encoded)
{
    return boost::urls::pct_string_view(encoded).decode();
}

/// The rule that a URI breaks, or nothing.
std::optional<std::string> brokenRule(const Uri& uri)
{
    constexpr std::string_view family = "dds+";
    const std::string scheme = lowerScheme(uri);
    if (!scheme.starts_with(family) || scheme.size() == family.size()) {
        return "its scheme does not begin with \"dds+\" and a profile";
    }
    if (!uri.has_authority()) {
        return "it has no authority (the part after \"//\", which may be empty)";
    }
    if (uri.has_user_info()) {
        return "it has user info";
    }
    if (uri.has_port()) {
        return "it has a port";
    }
    if (uri.has_query()) {
        return "it has a query";
    }
    if (uri.has_fragment()) {
        return "it has a fragment";
    }
    const std::string writtenDomain = authority(uri);
    if (!writtenDomain.empty() && !parseDomain(writtenDomain)) {
        return "its domain is not a whole number from 0 to " + std::to_string(maxDomain);
    }
    const std::string topic = decoded(encodedTopic(uri));
    if (topic.empty()) {
        return "its topic is empty";
    }
    if (topic.size() > maxTopicLength) {
        return "its topic is longer than " + std::to_string(maxTopicLength) + " bytes";
    }
    if (topic.find('\0') != std::string::npos) {
        return "its topic holds a NUL character";
    }
    return std::nullopt;
}

} // namespace

void DdsUriHelper::checkUri(const Uri& uri, bool logFailure)
{
    const auto rule = brokenRule(uri);
    if (!rule) {
        return;
    }
    const std::string message = "Uri " + uri.string() + " is not a DDS Uri: " + *rule;
    if (logFailure) {
        LOG4CPLUS_ERROR(log4cplus::Logger::getInstance("plexDdsUriHelper"), message);
    }
    throw PlexException(message);
}

bool DdsUriHelper::isPubSubUri(const Uri& uri)
{
    return lowerScheme(uri) == "dds+ps";
}

std::string DdsUriHelper::topic(const Uri& uri, bool decode)
{
    const std::string encoded = encodedTopic(uri);
    return decode ? decoded(encoded) : encoded;
}

std::uint32_t DdsUriHelper::domain(const Uri& uri, const Plex::Properties& properties)
{
    const std::string inUri = authority(uri);
    const auto written = inUri.empty() ? util::findProperty(properties, "dds.domain") : inUri;
    if (!written) {
        return 0;
    }
    const auto domain = parseDomain(*written);
    if (!domain) {
        throw PlexException("Property dds.domain is not a whole number from 0 to " +
                            std::to_string(maxDomain) + ": \"" + *written + "\"");
    }
    return *domain;
}

} // namespace ovra::plex
