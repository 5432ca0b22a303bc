// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

namespace network
{

/// Thrown by a uri's constructor for text that is no URI reference (RFC 3986).
class __attribute__((visibility("default"))) uri_syntax_error : public std::system_error
{
public:
    uri_syntax_error();
    uri_syntax_error(const uri_syntax_error&) = default;
    uri_syntax_error& operator=(const uri_syntax_error&) = default;
    ~uri_syntax_error() override;
};

/// A URI or relative reference (RFC 3986): its text, unchanged, and views of its parts.
///
/// The part of cpp-netlib's uri class that this project needs, with the same observable behaviour, for
/// systems where that library is not packaged. A plain value: copy it freely.
class __attribute__((visibility("default"))) uri
{
public:
    /// The empty reference.
    uri() = default;

    /// @throws uri_syntax_error when the text is no URI reference.
    template <class Source>
    explicit uri(const Source& source)
    {
        parse(std::string(source));
    }

    /// @throws uri_syntax_error when the text is no URI reference.
    template <class InputIterator>
    uri(InputIterator first, InputIterator last)
    {
        parse(std::string(first, last));
    }

    bool has_scheme() const noexcept { return scheme_.present; }

    bool has_user_info() const noexcept { return userInfo_.present; }

    bool has_host() const noexcept { return host_.present; }

    bool has_port() const noexcept { return port_.present; }

    bool has_path() const noexcept { return path_.present; }

    bool has_query() const noexcept { return query_.present; }

    bool has_fragment() const noexcept { return fragment_.present; }

    bool has_authority() const noexcept { return authority_.present; }

    std::string_view scheme() const noexcept { return view(scheme_); }

    std::string_view user_info() const noexcept { return view(userInfo_); }

    std::string_view host() const noexcept { return view(host_); }

    std::string_view port() const noexcept { return view(port_); }

    /// As written, percent-encoded.
    std::string_view path() const noexcept { return view(path_); }

    std::string_view query() const noexcept { return view(query_); }

    std::string_view fragment() const noexcept { return view(fragment_); }

    std::string_view authority() const noexcept { return view(authority_); }

    /// The text that the object was made from.
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

    void parse(std::string text);

    std::string_view view(const Part& part) const noexcept
    {
        return std::string_view(text_).substr(part.begin, part.size);
    }

    std::string text_;
    Part scheme_;
    Part userInfo_;
    Part host_;
    Part port_;
    Part path_;
    Part query_;
    Part fragment_;
    Part authority_;
};

} // namespace network
