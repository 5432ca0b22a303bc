// SPDX-License-Identifier: Apache-2.0
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>
#include <network/uri.hpp>

#include <utility>

namespace network
{

namespace
{

/// Whether what Boost.URL accepts is a reference by RFC 3986. It lets '#' pass inside a fragment, and where
/// there is no scheme, a path without a slash behind a port or behind an address in brackets.
bool isReference(const boost::urls::url_view& url)
{
    const auto path = url.encoded_path();
    return !url.encoded_fragment().contains('#') &&
           (!url.has_authority() || path.empty() || path.front() == '/');
}

} // namespace

uri_syntax_error::uri_syntax_error()
    : std::system_error(std::make_error_code(std::errc::invalid_argument), "Unable to parse URI string.")
{
}

uri_syntax_error::~uri_syntax_error() = default;

void uri::parse(std::string text)
{
    const auto parsed = boost::urls::parse_uri_reference(text);
    if (!parsed || !isReference(*parsed)) {
        throw uri_syntax_error();
    }
    const boost::urls::url_view& url = *parsed;
    const auto part = [&text](bool present, std::string_view piece) {
        return present ? Part{static_cast<std::size_t>(piece.data() - text.data()), piece.size(), true}
                       : Part{};
    };
    parts_.scheme = part(url.has_scheme(), url.scheme());
    parts_.authority = part(url.has_authority(), url.encoded_authority());
    parts_.userInfo = part(url.has_userinfo(), url.encoded_userinfo());
    parts_.host = part(url.has_authority(), url.encoded_host());
    parts_.port = part(url.has_port(), url.port());
    parts_.path = part(!url.encoded_path().empty(), url.encoded_path());
    parts_.query = part(url.has_query(), url.encoded_query());
    parts_.fragment = part(url.has_fragment(), url.encoded_fragment());
    text_ = std::move(text);
}

} // namespace network
