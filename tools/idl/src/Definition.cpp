// SPDX-License-Identifier: Apache-2.0
#include "Keywords.hpp"

#include <plex/idl/Definition.hpp>

#include <algorithm>
#include <unordered_set>

namespace ovra::plex::idl
{

namespace
{

using Types = std::unordered_set<const NamedType*>;

// --- What a type is made of --------------------------------------------------------------------------------

/// Calls visit(type) for each type that stands in the text of a declaration.
template <class Visit>
void visitParts(const NamedType& type, const Visit& visit)
{
    if (const auto* const alias = as<AliasType>(type)) {
        visit(*alias->target);
    } else if (const auto* const bitset = as<BitsetType>(type)) {
        if (bitset->base != nullptr) {
            visit(*bitset->base);
        }
        std::ranges::for_each(bitset->fields, [&](const BitField& field) { visit(*field.type); });
    } else if (const auto* const structure = as<StructType>(type)) {
        if (structure->base != nullptr) {
            visit(*structure->base);
        }
        std::ranges::for_each(structure->members, [&](const Member& member) { visit(*member.type); });
    } else if (const auto* const choice = as<UnionType>(type)) {
        visit(*choice->discriminator);
        std::ranges::for_each(choice->cases, [&](const UnionCase& each) { visit(*each.type); });
    }
}

/// Calls visit(named) for each type with a name in how a type is written.
template <class Visit>
void visitNames(const Type& type, const Visit& visit)
{
    if (const auto* const named = as<NamedType>(type)) {
        visit(*named);
    } else if (const auto* const sequence = as<SequenceType>(type)) {
        visitNames(*sequence->element, visit);
    } else if (const auto* const array = as<ArrayType>(type)) {
        visitNames(*array->element, visit);
    } else if (const auto* const map = as<MapType>(type)) {
        visitNames(*map->key, visit);
        visitNames(*map->value, visit);
    }
}

/// The types, and all that they are made of.
Types closureOf(std::vector<const NamedType*> open)
{
    Types known(open.begin(), open.end());
    while (!open.empty()) {
        const NamedType& type = *open.back();
        open.pop_back();
        visitParts(type, [&](const Type& part) {
            visitNames(part, [&](const NamedType& named) {
                if (known.insert(&named).second) {
                    open.push_back(&named);
                }
            });
        });
    }
    return known;
}

// --- How parts are written ---------------------------------------------------------------------------------

std::string escaped(const std::string& name)
{
    return name.starts_with('_') || isKeywordInAnyCase(name) ? "_" + name : name;
}

/// From the root on, so that nothing declared in between hides it.
std::string scopedNameOf(const NamedType& type)
{
    std::string name = "::" + escaped(type.name);
    for (const Module* module = type.module; module->parent != nullptr; module = module->parent) {
        name.insert(0, "::" + escaped(module->name));
    }
    return name;
}

std::string bounded(const std::string& start, std::uint32_t bound)
{
    return bound == 0 ? start + ">" : start + ", " + std::to_string(bound) + ">";
}

/// Without the dimensions of an array, which stand behind the name.
std::string textOf(const Type& type)
{
    if (const auto* const named = as<NamedType>(type)) {
        return scopedNameOf(*named);
    }
    if (const auto* const sequence = as<SequenceType>(type)) {
        return bounded("sequence<" + textOf(*sequence->element), sequence->bound);
    }
    if (const auto* const map = as<MapType>(type)) {
        return bounded("map<" + textOf(*map->key) + ", " + textOf(*map->value), map->bound);
    }
    const auto* const array = as<ArrayType>(type);
    return array == nullptr ? toString(type) : textOf(*array->element);
}

/// "double matrix[2][3]".
std::string declarator(const Type& type, const std::string& name)
{
    std::string text = textOf(type) + " " + escaped(name);
    if (const auto* const array = as<ArrayType>(type)) {
        for (const std::uint32_t dimension : array->dimensions) {
            text += "[" + std::to_string(dimension) + "]";
        }
    }
    return text;
}

std::string textOf(const Value& value)
{
    const auto* const enumerator = std::get_if<const Enumerator*>(&value);
    return enumerator == nullptr ? toString(value) : escaped((*enumerator)->name);
}

std::string annotation(const std::string& name, const std::string& value)
{
    return "@" + name + "(" + value + ") ";
}

std::string annotation(const std::string& name, std::uint32_t value)
{
    return annotation(name, std::to_string(value));
}

std::string quantityOf(const Quantity& quantity)
{
    std::string text = quantity.unit.empty() ? "" : annotation("unit", toString(Value(quantity.unit)));
    text += quantity.minimum ? annotation("min", textOf(*quantity.minimum)) : "";
    text += quantity.maximum ? annotation("max", textOf(*quantity.maximum)) : "";
    return text;
}

std::string tryConstructOf(const Member& member)
{
    switch (member.tryConstruct) {
    case TryConstruct::Discard:
        return {};
    case TryConstruct::UseDefault:
        return annotation("try_construct", "USE_DEFAULT");
    case TryConstruct::Trim:
        break;
    }
    return annotation("try_construct", "TRIM");
}

std::string memberText(const Member& member)
{
    std::string text = member.key ? "@key " : "";
    text += member.optional ? "@optional " : "";
    text += member.mustUnderstand ? "@must_understand " : "";
    text += member.external ? "@external " : "";
    text +=
        annotation("id", member.id); // behind those without a value: the name of a type would continue theirs
    text += tryConstructOf(member) + quantityOf(member);
    text += member.defaultValue ? annotation("default", textOf(*member.defaultValue)) : "";
    return text + declarator(*member.type, member.name) + ";";
}

// --- Declarations ------------------------------------------------------------------------------------------

/// What stands before a struct, union, enum or bitmask.
std::string extensibilityText(Extensibility extensibility)
{
    return "@" + std::string(toString(extensibility)) + " ";
}

std::string line(const std::string& text)
{
    return "    " + text + "\n";
}

/// With commas between them.
template <class Declared, class Number>
std::string namesText(const std::vector<Declared>& all, const Number& number)
{
    std::string text;
    for (const Declared& one : all) {
        text += line(number(one) + escaped(one.name) + (&one == &all.back() ? "" : ","));
    }
    return text;
}

std::string declaration(const EnumType& type)
{
    return extensibilityText(type.extensibility) + annotation("bit_bound", type.bitBound) + "enum " +
           escaped(type.name) + " {\n" +
           namesText(type.enumerators,
                     [](const Enumerator& one) {
                         return (one.isDefault ? "@default_literal " : "") +
                                annotation("value", std::to_string(one.value));
                     }) +
           "}";
}

std::string declaration(const BitmaskType& type)
{
    return extensibilityText(type.extensibility) + annotation("bit_bound", type.bitBound) + "bitmask " +
           escaped(type.name) + " {\n" +
           namesText(type.flags, [](const BitFlag& one) { return annotation("position", one.position); }) +
           "}";
}

std::string declaration(const BitsetType& type)
{
    std::string text = "bitset " + escaped(type.name);
    text += type.base == nullptr ? "" : " : " + scopedNameOf(*type.base);
    text += " {\n";
    std::uint32_t position = type.base == nullptr ? 0 : type.base->bits;
    const auto fillUpTo = [&](std::uint32_t end) {
        text += position < end ? line("bitfield<" + std::to_string(end - position) + ">;") : "";
        position = end;
    };
    for (const BitField& field : type.fields) {
        fillUpTo(field.position);
        text += line("bitfield<" + std::to_string(field.bits) + ", " + textOf(*field.type) + "> " +
                     escaped(field.name) + ";");
        position += field.bits;
    }
    fillUpTo(type.bits);
    return text + "}";
}

std::string declaration(const StructType& type)
{
    std::string text = extensibilityText(type.extensibility);
    text += type.topic ? "@topic " : "";
    text += type.nested ? "@nested " : "";
    text += "struct " + escaped(type.name);
    text += type.base == nullptr ? "" : " : " + scopedNameOf(*type.base);
    text += " {\n";
    for (const Member& member : type.members) {
        text += line(memberText(member));
    }
    return text + "}";
}

std::string declaration(const UnionType& type)
{
    std::string text = extensibilityText(type.extensibility);
    text += type.nested ? "@nested " : "";
    text += "union " + escaped(type.name) + " switch (" + (type.discriminatorIsKey ? "@key(TRUE) " : "") +
            textOf(*type.discriminator) + ") {\n";
    for (const UnionCase& each : type.cases) {
        for (const Label& label : each.labels) {
            text += line("case " + textOf(label.value) + ":");
        }
        text += each.isDefault ? line("default:") : "";
        text += line(memberText(each));
    }
    return text + "}";
}

std::string declarationOf(const NamedType& type)
{
    if (const auto* const alias = as<AliasType>(type)) {
        return quantityOf(*alias) + "typedef " + declarator(*alias->target, alias->name);
    }
    if (const auto* const enumeration = as<EnumType>(type)) {
        return declaration(*enumeration);
    }
    if (const auto* const bitmask = as<BitmaskType>(type)) {
        return declaration(*bitmask);
    }
    if (const auto* const bitset = as<BitsetType>(type)) {
        return declaration(*bitset);
    }
    if (const auto* const structure = as<StructType>(type)) {
        return declaration(*structure);
    }
    return declaration(static_cast<const UnionType&>(type));
}

// --- All of it ---------------------------------------------------------------------------------------------

/// Puts declarations one behind the other, each in its modules.
class DefinitionWriter
{
public:
    void add(const NamedType& type)
    {
        declared_.insert(&type);
        visitParts(type, [&](const Type& part) {
            visitNames(part, [&](const NamedType& named) { declareForward(named); });
        });
        enter(*type.module);
        text_ += declarationOf(type) + ";\n";
    }

    std::string finish()
    {
        leave();
        return std::move(text_);
    }

private:
    /// Only structs and unions are used before they are defined.
    void declareForward(const NamedType& type)
    {
        if (declared_.insert(&type).second) {
            enter(*type.module);
            text_ += (type.kind == TypeKind::Union ? "union " : "struct ") + escaped(type.name) + ";\n";
        }
    }

    void enter(const Module& module)
    {
        if (module_ == &module) {
            return;
        }
        leave();
        std::string text;
        for (const Module* outer = &module; outer->parent != nullptr; outer = outer->parent) {
            text.insert(0, "module " + escaped(outer->name) + " {\n");
        }
        text_ += text;
        module_ = &module;
    }

    void leave()
    {
        for (; module_ != nullptr && module_->parent != nullptr; module_ = module_->parent) {
            text_ += "};\n";
        }
    }

    std::string text_;
    Types declared_; ///< forward at least
    const Module* module_ = nullptr;
};

} // namespace

std::string definitionOf(const Model& model, const std::vector<const NamedType*>& types)
{
    const Types all = closureOf(types);
    DefinitionWriter writer;
    for (const NamedType* const type : model.types) {
        if (all.contains(type)) {
            writer.add(*type);
        }
    }
    return writer.finish();
}

} // namespace ovra::plex::idl
