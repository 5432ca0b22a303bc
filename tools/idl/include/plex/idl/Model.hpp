// SPDX-License-Identifier: Apache-2.0
// What interface definitions say: a graph of types, with names resolved, constants evaluated and member ids
// assigned.
//
// parseFile() makes a model; nobody changes it afterwards, so that any number of threads may read it. The
// model owns all that it is made of: pointers into it, none of which is null unless that is said, live as
// long as it does, and stay valid when it is moved.
//
// Types by value form no cycle: one that contains itself does so through a sequence, a map, an optional or an
// external member, and is then met again while it is walked. Nesting by value is at most MaximumDepth deep.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ovra::plex::idl
{

struct Module;
struct Enumerator;

/// So deep do types lie within one another at most: members, elements, aliases and bases.
inline constexpr std::uint32_t MaximumDepth = 128;

/// Where something is declared.
struct Location {
    std::uint32_t file = 0;   ///< index into Model::files
    std::uint32_t line = 0;   ///< from 1
    std::uint32_t column = 0; ///< from 1, in characters
};

/// A file that was read.
struct SourceFile {
    std::string path;      ///< as it was named, or as the include found it
    bool included = false; ///< whether an include brought it in; what it declares is used, not generated
};

/// A value that a constant or an annotation has. Integers and octets are signed or unsigned as their type is,
/// float, double and long double are double, char is char and wchar char32_t, both kinds of strings are
/// UTF-8, and bitmasks are unsigned.
using Value =
    std::variant<bool, char, char32_t, std::int64_t, std::uint64_t, double, std::string, const Enumerator*>;

/// An annotation as it was written.
struct Annotation {
    struct Parameter {
        std::string name; ///< empty where it is given by position
        std::string text; ///< the tokens of the value with single blanks between them
    };

    std::string name; ///< without @; scoped as it was written
    std::vector<Parameter> parameters;
    Location location;
};

/// What @verbatim asks to be put into the output.
struct Verbatim {
    std::string language;  ///< in lower case: "c++", "c", "java", "idl", "*"
    std::string placement; ///< BEGIN_FILE, BEFORE_DECLARATION, BEGIN_DECLARATION, END_DECLARATION,
                           ///< AFTER_DECLARATION, END_FILE
    std::string text;
};

/// What every declaration has.
struct Declared {
    std::string name; ///< without the underscore of an escaped name
    Location location;
    std::string
        documentation; ///< text of documentation comments, lines separated by \n; empty where there is none
    std::vector<Annotation> annotations; ///< all of them, those that the model knows included
    std::vector<Verbatim> verbatim;
};

// --- Types -------------------------------------------------------------------------------------------------

enum class TypeKind : std::uint8_t {
    Boolean,
    Octet, ///< eight bits without a meaning; uint8 is a number
    Char,
    WChar,
    Int8,
    Uint8,
    Int16,
    Uint16,
    Int32,
    Uint32,
    Int64,
    Uint64,
    Float,
    Double,
    LongDouble,
    String,
    WString,
    Sequence,
    Array,
    Map,
    Alias,
    Enum,
    Bitmask,
    Bitset,
    Struct,
    Union
};

enum class Extensibility : std::uint8_t { Final, Appendable, Mutable };

/// What a reader does with an element that it can not take.
enum class TryConstruct : std::uint8_t { Discard, UseDefault, Trim };

/// A node of the graph. A primitive type is nothing but this; the others are one of the classes below, by
/// their kind.
struct Type {
    explicit Type(TypeKind typeKind) : kind(typeKind) {}

    Type(const Type&) = delete;
    Type& operator=(const Type&) = delete;
    virtual ~Type() = default;

    TypeKind kind;
    std::uint32_t depth = 1; ///< of nesting by value, 1 for what contains nothing
};

/// Kinds String and WString.
struct StringType : Type {
    using Type::Type;
    std::uint32_t bound = 0; ///< in characters, without the terminating NUL; 0: unbounded
};

struct SequenceType : Type {
    SequenceType() : Type(TypeKind::Sequence) {}

    const Type* element = nullptr;
    std::uint32_t bound = 0; ///< 0: unbounded
};

struct ArrayType : Type {
    ArrayType() : Type(TypeKind::Array) {}

    const Type* element = nullptr; ///< never an anonymous array; an alias of one keeps its own dimensions
    std::vector<std::uint32_t> dimensions; ///< outermost first; their product fits 32 bits
};

struct MapType : Type {
    MapType() : Type(TypeKind::Map) {}

    const Type* key = nullptr;
    const Type* value = nullptr;
    std::uint32_t bound = 0; ///< 0: unbounded
};

/// A type that has a name.
struct NamedType : Type, Declared {
    using Type::Type;
    const Module* module = nullptr; ///< in which it is declared
    std::string scopedName;         ///< "a::b::Name"
    bool included = false;          ///< declared in an included file: used, not generated
};

/// What numbers are, and between which two; of an array or a sequence, what its elements are.
struct Quantity {
    std::string unit;             ///< empty: none
    std::optional<Value> minimum; ///< of the kind that the type has: see Value; inclusive
    std::optional<Value> maximum; ///< likewise
};

/// A typedef.
struct AliasType : NamedType, Quantity {
    AliasType() : NamedType(TypeKind::Alias) {}

    const Type* target = nullptr; ///< as it was written, maybe an alias itself
};

struct Enumerator : Declared {
    std::int32_t value = 0;
    bool isDefault =
        false; ///< what readers take for values that they do not know: @default_literal, else the first
};

struct EnumType : NamedType {
    EnumType() : NamedType(TypeKind::Enum) {}

    std::uint32_t bitBound = 32;
    Extensibility extensibility = Extensibility::Appendable;
    std::vector<Enumerator> enumerators; ///< at least one
};

struct BitFlag : Declared {
    std::uint32_t position = 0; ///< 0 is the lowest bit
};

struct BitmaskType : NamedType {
    BitmaskType() : NamedType(TypeKind::Bitmask) {}

    std::uint32_t bitBound = 32;
    Extensibility extensibility = Extensibility::Appendable;
    std::vector<BitFlag> flags; ///< at least one
};

struct BitField : Declared {
    std::uint32_t bits = 0;     ///< 1 to 64
    std::uint32_t position = 0; ///< of its lowest bit
    const Type* type =
        nullptr; ///< as declared, else the smallest unsigned type that holds it, boolean for one bit
};

struct BitsetType : NamedType {
    BitsetType() : NamedType(TypeKind::Bitset) {}

    const BitsetType* base = nullptr; ///< null: none
    std::uint32_t bits = 0; ///< all of them, with those of the base and those without a name; at most 64
    std::vector<BitField> fields; ///< those that have a name, without the base's
};

/// A member of a struct. It has unit and range of its type's alias where it gives none.
struct Member : Declared, Quantity {
    const Type* type = nullptr;
    std::uint32_t id = 0; ///< at most 0x0FFFFFFF, unique in the type and its bases
    bool key = false;
    bool optional = false;
    bool mustUnderstand = false; ///< as annotated; that keys are so by themselves is left to the encoding
    bool external = false;
    TryConstruct tryConstruct = TryConstruct::Discard;
    std::optional<Value> defaultValue; ///< of the type's own kind: see Value
};

struct StructType : NamedType {
    StructType() : NamedType(TypeKind::Struct) {}

    const StructType* base = nullptr; ///< null: none
    Extensibility extensibility = Extensibility::Appendable;
    std::vector<Member> members; ///< without the base's
    bool topic = false;          ///< @topic
    bool nested = false;         ///< @nested, or @default_nested of a module around it, unless it is a @topic
    bool hasKey = false;         ///< a member of it or of its bases is annotated @key
};

/// A value of the discriminator that selects a case.
struct Label {
    Value value;
    std::uint64_t bits = 0; ///< the number of it, in two's complement
};

/// A case of a union. It is neither key nor optional.
struct UnionCase : Member {
    std::vector<Label> labels; ///< empty where there is nothing but default
    bool isDefault = false;
};

struct UnionType : NamedType {
    UnionType() : NamedType(TypeKind::Union) {}

    const Type* discriminator =
        nullptr; ///< boolean, octet, char, wchar, an integer, an enum, or an alias of one
    bool discriminatorIsKey = false;
    Extensibility extensibility = Extensibility::Appendable;
    std::vector<UnionCase> cases; ///< at least one
    /// The lowest value from 0 on, or of the enumerators in their order, that is no label; none where all are
    /// labels.
    std::optional<Label> unusedLabel;
    bool nested = false;

    /// The case that a discriminator selects. @param bits its number in two's complement. @returns null:
    /// none.
    const UnionCase* caseOf(std::uint64_t bits) const;

    /// Whether a discriminator is one of the union: it selects a case, or it is an enumerator or a boolean,
    /// which all who know the type know, and stands for no member. Other numbers without a case may be labels
    /// of a later version of the type, whose members nobody here could find the end of.
    bool takes(std::uint64_t bits) const;
};

// --- Other declarations ------------------------------------------------------------------------------------

struct Constant : Declared {
    const Module* module = nullptr;
    std::string scopedName;
    const Type* type = nullptr; ///< as it was written
    Value value;
    bool included = false;
};

/// A type, constant or module, where it first stands. What was only declared forward is not among them.
using Declaration = std::variant<const NamedType*, const Constant*, const Module*>;

/// A module with all that its parts declare, however often it is reopened.
struct Module : Declared {
    const Module* parent =
        nullptr;            ///< null: the root, which has no name and is what stands outside of all modules
    std::string scopedName; ///< empty for the root
    std::vector<Declaration> declarations; ///< in the order of the text
};

/// All that was read.
class Model
{
public:
    Model();
    Model(Model&&) noexcept;
    Model& operator=(Model&&) noexcept;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model();

    std::vector<SourceFile> files; ///< those that were named come first
    const Module* root = nullptr;
    /// In the order of the text: what a type contains by value comes before it.
    std::vector<const NamedType*> types;
    std::vector<const Constant*> constants;

    /// Finds by scoped name. @returns null: there is none.
    const NamedType* findType(std::string_view scopedName) const;
    const Constant* findConstant(std::string_view scopedName) const;

private:
    friend class ModelBuilder;
    struct Storage;
    std::unique_ptr<Storage> storage_;
};

// --- Walking -----------------------------------------------------------------------------------------------

/// What a type is once aliases are looked through. @returns never an alias.
const Type& resolved(const Type& type);

/// The type as its class, aliases not looked through; null where its kind is another.
template <class T>
const T* as(const Type& type);

template <>
const StringType* as<StringType>(const Type& type);
template <>
const SequenceType* as<SequenceType>(const Type& type);
template <>
const ArrayType* as<ArrayType>(const Type& type);
template <>
const MapType* as<MapType>(const Type& type);
template <>
const NamedType* as<NamedType>(const Type& type);
template <>
const AliasType* as<AliasType>(const Type& type);
template <>
const EnumType* as<EnumType>(const Type& type);
template <>
const BitmaskType* as<BitmaskType>(const Type& type);
template <>
const BitsetType* as<BitsetType>(const Type& type);
template <>
const StructType* as<StructType>(const Type& type);
template <>
const UnionType* as<UnionType>(const Type& type);

/// Boolean to LongDouble.
bool isPrimitive(TypeKind kind);

/// Octet, Int8 to Uint64.
bool isInteger(TypeKind kind);

/// Float, Double and LongDouble.
bool isFloating(TypeKind kind);

/// How many bits a value of an integer, enum or bitmask takes: 8, 16, 32 or 64. 0 for others.
std::uint32_t storageBits(const Type& type);

/// How a type is written: "sequence<dome::Vec3, 16>", "string<32>", "double[2][3]", "dome::Vec3".
std::string toString(const Type& type);

/// How a value would be written in a definition: "3", "0.5", "TRUE", "'a'", "\"text\"", "OPEN".
std::string toString(const Value& value);

std::string_view toString(Extensibility extensibility); ///< "final", "appendable", "mutable"

/// Members in the order of the encoding: those of the bases first.
std::vector<const Member*> allMembers(const StructType& type);

/// How many elements an array has, in all its dimensions.
std::uint32_t elementCount(const ArrayType& type);

} // namespace ovra::plex::idl
