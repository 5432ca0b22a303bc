// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

namespace network
{

/// What contract, binding and first program ask of a URI: to be made from text, copied, and to give its text.
class uri
{
public:
    explicit uri(std::string text) : text_(std::move(text)) {}

    std::string string() const { return text_; }

private:
    std::string text_;
};

} // namespace network
