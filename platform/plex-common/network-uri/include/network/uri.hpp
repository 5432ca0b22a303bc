// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace network
{

/// Thrown by a uri's constructor for text that is no URI.
class __attribute__((visibility("default"))) uri_syntax_error : public std::system_error
{
public:
    uri_syntax_error();
    uri_syntax_error(const uri_syntax_error&) = default;
    uri_syntax_error& operator=(const uri_syntax_error&) = default;
    ~uri_syntax_error() override;
};

/// A URI: its text, without the space around it, and views of its parts. A plain value: copy it freely.
///
/// The part of cpp-netlib's uri class that this project needs, with the same observable behaviour, for
/// systems where that library is not packaged. As there, it holds what RFC 3986 calls a URI, but for this:
/// - The host may hold any characters; so may the port, where there are neither user info nor brackets.
/// - An opening bracket begins the host: what stands before it in an authority without user info is in no
/// part.
///   A closing one ends it, where a port, a path, a query, a fragment or nothing follows; else the text does.
/// - An authority begins with neither '@' nor ':', and something follows an empty one. A port is less than
/// 65535;
///   with user info or brackets, a path or nothing follows it.
/// - With an authority there is a path, if an empty one. Without, the path's first character, or the one
/// behind
///   its slash, may be any, and a mere slash is no path.
class __attribute__((visibility("default"))) uri
{
public:
    /// Empty: without any part.
    uri() = default;

    /// Text of nothing but space makes an empty one.
    /// @throws uri_syntax_error when the text is no URI.
    explicit uri(const std::string& text) { parse(text); }

    /// As above.
    template <class InputIterator>
    uri(InputIterator first, InputIterator last)
    {
        parse(std::string(first, last));
    }

    uri(const uri&) = default;
    uri& operator=(const uri&) = default;

    /// Leaves the other empty.
    uri(uri&& other) noexcept { swap(other); }

    uri& operator=(uri&& other) noexcept
    {
        uri(std::move(other)).swap(*this);
        return *this;
    }

    ~uri() = default;

    void swap(uri& other) noexcept
    {
        std::swap(text_, other.text_);
        std::swap(parts_, other.parts_);
    }

    bool has_scheme() const noexcept { return parts_.scheme.present; }

    bool has_user_info() const noexcept { return parts_.userInfo.present; }

    bool has_host() const noexcept { return parts_.host.present; }

    bool has_port() const noexcept { return parts_.port.present; }

    bool has_path() const noexcept { return parts_.path.present; }

    bool has_query() const noexcept { return parts_.query.present; }

    bool has_fragment() const noexcept { return parts_.fragment.present; }

    bool has_authority() const noexcept { return parts_.authority.present; }

    std::string_view scheme() const noexcept { return view(parts_.scheme); }

    std::string_view user_info() const noexcept { return view(parts_.userInfo); }

    std::string_view host() const noexcept { return view(parts_.host); }

    std::string_view port() const noexcept { return view(parts_.port); }

    /// As written, percent-encoded.
    std::string_view path() const noexcept { return view(parts_.path); }

    std::string_view query() const noexcept { return view(parts_.query); }

    std::string_view fragment() const noexcept { return view(parts_.fragment); }

    std::string_view authority() const noexcept { return view(parts_.authority); }

    std::string string() const { return text_; }

    std::string_view view() const noexcept { return text_; }

    bool empty() const noexcept { return text_.empty(); }

    friend bool operator==(const uri& left, const uri& right) noexcept { return left.text_ == right.text_; }

    friend bool operator!=(const uri& left, const uri& right) noexcept { return !(left == right); }

    friend bool operator<(const uri& left, const uri& right) noexcept { return left.text_ < right.text_; }

private:
    /// Where a part stands in the text; positions survive copying, views would not.
    struct Part {
        std::size_t begin = 0;
        std::size_t size = 0;
        bool present = false;
    };

    struct Parts {
        Part scheme;
        Part userInfo;
        Part host;
        Part port;
        Part path;
        Part query;
        Part fragment;
        Part authority;
    };

    class Parser;

    void parse(const std::string& text);

    std::string_view view(const Part& part) const noexcept
    {
        return std::string_view(text_).substr(part.begin, part.size);
    }

    std::string text_;
    Parts parts_;
};

} // namespace network
