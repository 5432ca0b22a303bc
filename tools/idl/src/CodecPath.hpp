// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovra::plex::idl
{

/// The place within a value that a codec has come to.
class CodecPath
{
public:
    /// One step further in, for as long as it lives.
    class Step
    {
    public:
        /// A member.
        Step(CodecPath& path, std::string_view name);
        /// An element. @param dimensions of an array; null: a sequence.
        Step(CodecPath& path, std::uint64_t index, const std::vector<std::uint32_t>* dimensions = nullptr);
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;
        ~Step();

    private:
        CodecPath& path_;
    };

    [[noreturn]] void fail(const std::string& text, std::optional<std::size_t> offset = std::nullopt) const;

private:
    struct Part {
        std::string_view name; ///< empty: an element
        std::uint64_t index = 0;
        const std::vector<std::uint32_t>* dimensions = nullptr;
    };

    void push(const Part& part);
    static void append(std::string& text, const Part& part);

    std::vector<Part> parts_;
};

} // namespace ovra::plex::idl
