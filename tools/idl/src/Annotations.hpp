// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Context.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ovra::plex::idl
{

/// What an annotation may stand before.
enum class Annotated : std::uint32_t {
    Module = 1U << 0U,
    Struct = 1U << 1U,
    Union = 1U << 2U,
    Enum = 1U << 3U,
    Bitmask = 1U << 4U,
    Bitset = 1U << 5U,
    Alias = 1U << 6U,
    Constant = 1U << 7U,
    Member = 1U << 8U,
    Case = 1U << 9U,
    Discriminator = 1U << 10U,
    Enumerator = 1U << 11U,
    Flag = 1U << 12U,
    Element = 1U << 13U,
    Field = 1U << 14U
};

/// An annotation before it is known what it stands before, and so of which type its values are.
struct ReadAnnotation {
    Annotation written;
    std::vector<std::size_t> values; ///< positions of the parameters' values among the tokens

    /// The index of a parameter by its name, or by its position where it has none; nothing where it is not
    /// given.
    std::optional<std::size_t> find(std::string_view parameter, std::size_t position = 0) const;
};

/// What stands before a declaration.
class AnnotationList
{
public:
    /// Reads all that come. @throws SyntaxError
    static AnnotationList read(Context& context);

    /// Adds those that stand further on before the same thing.
    void append(AnnotationList others);

    /// The annotation of a name; null where there is none.
    const ReadAnnotation* find(std::string_view name) const;

    bool empty() const { return all_.empty(); }

    /// Warns of those that are unknown or have no effect on what they stand before, and of those given twice.
    void check(Context& context, Annotated what) const;

    /// Hands over what is kept as it was written.
    void applyTo(Context& context, Declared& declared) const;

    /// Whether an annotation with a boolean parameter is there, and TRUE. @returns nothing where it is not
    /// there.
    std::optional<bool> flag(Context& context, std::string_view name) const;

    /// The text that is the parameter of an annotation; nothing where it is not there.
    std::optional<std::string> text(Context& context, std::string_view name) const;

    /// The number that is the parameter of an annotation, if it is between two.
    std::optional<std::int64_t> number(Context& context, std::string_view name, std::int64_t least,
                                       std::int64_t most) const;

    /// Which one of some words the parameter of an annotation is; nothing where it is not there.
    std::optional<std::size_t> choice(Context& context, std::string_view name,
                                      const std::vector<std::string_view>& words) const;

    /// @final, @appendable, @mutable or @extensibility.
    std::optional<Extensibility> extensibility(Context& context) const;

private:
    std::vector<ReadAnnotation> all_;
};

/// Skips `@annotation name { … };`, whose name is known from then on.
void readAnnotationDeclaration(Context& context);

/// The value of a parameter. @param index of the parameter. @returns nothing after reporting that there is no
/// such value.
std::optional<Value> valueOf(Context& context, const ReadAnnotation& annotation, std::size_t index,
                             const Type& type);

} // namespace ovra::plex::idl
