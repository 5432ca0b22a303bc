// SPDX-License-Identifier: Apache-2.0
#include "JsonWriter.hpp"

#include <plex/idl/Json.hpp>

#include <array>

namespace ovra::plex::idl
{

namespace
{

constexpr std::array<std::string_view, 3> tryConstructNames{"discard", "use_default", "trim"};

/// Describes the parts of a model, one function for each.
class ModelWriter
{
public:
    std::string write(const Model& model);

private:
    void file(const SourceFile& source);
    void declared(const Declared& declared, const Model& model);
    void annotation(const Annotation& annotation);
    void value(std::string_view name, const Value& value);
    void quantity(const Quantity& quantity);
    void declaration(const Declaration& declaration, const Model& model);
    void module(const Module& module, const Model& model);
    void constant(const Constant& constant, const Model& model);
    void type(const NamedType& type, const Model& model);
    void typeBody(const AliasType& alias);
    void typeBody(const EnumType& enumeration, const Model& model);
    void typeBody(const BitmaskType& bitmask, const Model& model);
    void typeBody(const BitsetType& bitset, const Model& model);
    void typeBody(const StructType& structure, const Model& model);
    void typeBody(const UnionType& choice, const Model& model);
    void member(const Member& member, const Model& model);
    void unionCase(const UnionCase& unionCase, const Model& model);

    template <class Range, class Writer>
    void list(std::string_view name, const Range& range, const Writer& writeOne)
    {
        json_.key(name);
        json_.beginArray();
        for (const auto& one : range) {
            writeOne(one);
        }
        json_.endArray();
    }

    JsonWriter json_;
};

void ModelWriter::file(const SourceFile& source)
{
    json_.beginObject();
    json_.member("path", source.path);
    json_.mark("included", source.included);
    json_.endObject();
}

void ModelWriter::annotation(const Annotation& annotation)
{
    json_.beginObject();
    json_.member("name", annotation.name);
    if (!annotation.parameters.empty()) {
        list("parameters", annotation.parameters, [this](const auto& parameter) {
            json_.beginObject();
            json_.text("name", parameter.name);
            json_.member("text", parameter.text);
            json_.endObject();
        });
    }
    json_.endObject();
}

void ModelWriter::declared(const Declared& declared, const Model& model)
{
    json_.member("name", declared.name);
    json_.member("file", model.files.at(declared.location.file).path);
    json_.number("line", declared.location.line);
    json_.number("column", declared.location.column);
    json_.text("documentation", declared.documentation);
    if (!declared.annotations.empty()) {
        list("annotations", declared.annotations, [this](const Annotation& one) { annotation(one); });
    }
}

void ModelWriter::value(std::string_view name, const Value& value)
{
    json_.key(name);
    if (const auto* const text = std::get_if<std::string>(&value)) {
        json_.string(*text);
    } else if (const auto* const boolean = std::get_if<bool>(&value)) {
        json_.literal(*boolean ? "true" : "false");
    } else if (value.index() == Value(std::int64_t{}).index() ||
               value.index() == Value(std::uint64_t{}).index() || value.index() == Value(double{}).index()) {
        json_.literal(toString(value));
    } else {
        json_.string(toString(value));
    }
}

void ModelWriter::quantity(const Quantity& quantity)
{
    json_.text("unit", quantity.unit);
    if (quantity.minimum) {
        value("minimum", *quantity.minimum);
    }
    if (quantity.maximum) {
        value("maximum", *quantity.maximum);
    }
}

void ModelWriter::member(const Member& member, const Model& model)
{
    json_.beginObject();
    declared(member, model);
    json_.member("type", toString(*member.type));
    json_.number("id", member.id);
    json_.mark("key", member.key);
    json_.mark("optional", member.optional);
    json_.mark("must_understand", member.mustUnderstand);
    json_.mark("external", member.external);
    if (member.tryConstruct != TryConstruct::Discard) {
        json_.member("try_construct", tryConstructNames.at(static_cast<std::size_t>(member.tryConstruct)));
    }
    if (member.defaultValue) {
        value("default", *member.defaultValue);
    }
    quantity(member);
    json_.endObject();
}

void ModelWriter::unionCase(const UnionCase& unionCase, const Model& model)
{
    json_.beginObject();
    declared(unionCase, model);
    json_.member("type", toString(*unionCase.type));
    json_.number("id", unionCase.id);
    list("labels", unionCase.labels, [this](const Label& label) { json_.string(toString(label.value)); });
    json_.mark("default", unionCase.isDefault);
    json_.mark("external", unionCase.external);
    quantity(unionCase);
    json_.endObject();
}

void ModelWriter::typeBody(const AliasType& alias)
{
    json_.member("target", toString(*alias.target));
    quantity(alias);
}

void ModelWriter::typeBody(const EnumType& enumeration, const Model& model)
{
    json_.member("extensibility", toString(enumeration.extensibility));
    json_.number("bit_bound", enumeration.bitBound);
    list("enumerators", enumeration.enumerators, [&](const Enumerator& enumerator) {
        json_.beginObject();
        declared(enumerator, model);
        json_.key("value");
        json_.literal(std::to_string(enumerator.value));
        json_.mark("default", enumerator.isDefault);
        json_.endObject();
    });
}

void ModelWriter::typeBody(const BitmaskType& bitmask, const Model& model)
{
    json_.member("extensibility", toString(bitmask.extensibility));
    json_.number("bit_bound", bitmask.bitBound);
    list("flags", bitmask.flags, [&](const BitFlag& flag) {
        json_.beginObject();
        declared(flag, model);
        json_.number("position", flag.position);
        json_.endObject();
    });
}

void ModelWriter::typeBody(const BitsetType& bitset, const Model& model)
{
    json_.text("base", bitset.base == nullptr ? std::string() : bitset.base->scopedName);
    json_.number("bits", bitset.bits);
    list("fields", bitset.fields, [&](const BitField& field) {
        json_.beginObject();
        declared(field, model);
        json_.number("bits", field.bits);
        json_.number("position", field.position);
        json_.member("type", toString(*field.type));
        json_.endObject();
    });
}

void ModelWriter::typeBody(const StructType& structure, const Model& model)
{
    json_.text("base", structure.base == nullptr ? std::string() : structure.base->scopedName);
    json_.member("extensibility", toString(structure.extensibility));
    json_.mark("topic", structure.topic);
    json_.mark("nested", structure.nested);
    json_.mark("has_key", structure.hasKey);
    list("members", structure.members, [&](const Member& one) { member(one, model); });
}

void ModelWriter::typeBody(const UnionType& choice, const Model& model)
{
    json_.member("discriminator", toString(*choice.discriminator));
    json_.mark("discriminator_is_key", choice.discriminatorIsKey);
    json_.member("extensibility", toString(choice.extensibility));
    json_.mark("nested", choice.nested);
    list("cases", choice.cases, [&](const UnionCase& one) { unionCase(one, model); });
}

void ModelWriter::type(const NamedType& type, const Model& model)
{
    constexpr std::array<std::string_view, 6> kinds{"typedef", "enum",   "bitmask",
                                                    "bitset",  "struct", "union"};
    constexpr auto first = static_cast<std::size_t>(TypeKind::Alias);
    json_.beginObject();
    json_.member("kind", kinds.at(static_cast<std::size_t>(type.kind) - first));
    json_.member("scoped_name", type.scopedName);
    declared(type, model);
    json_.mark("included", type.included);
    if (const auto* const alias = as<AliasType>(type)) {
        typeBody(*alias);
    } else if (const auto* const enumeration = as<EnumType>(type)) {
        typeBody(*enumeration, model);
    } else if (const auto* const bitmask = as<BitmaskType>(type)) {
        typeBody(*bitmask, model);
    } else if (const auto* const bitset = as<BitsetType>(type)) {
        typeBody(*bitset, model);
    } else if (const auto* const structure = as<StructType>(type)) {
        typeBody(*structure, model);
    } else if (const auto* const choice = as<UnionType>(type)) {
        typeBody(*choice, model);
    }
    json_.endObject();
}

void ModelWriter::constant(const Constant& constant, const Model& model)
{
    json_.beginObject();
    json_.member("kind", "const");
    json_.member("scoped_name", constant.scopedName);
    declared(constant, model);
    json_.mark("included", constant.included);
    json_.member("type", toString(*constant.type));
    value("value", constant.value);
    json_.endObject();
}

void ModelWriter::module(const Module& module, const Model& model)
{
    json_.beginObject();
    json_.member("kind", "module");
    json_.member("scoped_name", module.scopedName);
    declared(module, model);
    list("declarations", module.declarations, [&](const Declaration& one) { declaration(one, model); });
    json_.endObject();
}

void ModelWriter::declaration(const Declaration& declaration, const Model& model)
{
    if (const auto* const* named = std::get_if<const NamedType*>(&declaration)) {
        type(**named, model);
    } else if (const auto* const* value = std::get_if<const Constant*>(&declaration)) {
        constant(**value, model);
    } else {
        module(*std::get<const Module*>(declaration), model);
    }
}

std::string ModelWriter::write(const Model& model)
{
    json_.beginObject();
    list("files", model.files, [this](const SourceFile& source) { file(source); });
    list("declarations", model.root->declarations, [&](const Declaration& one) { declaration(one, model); });
    json_.endObject();
    return json_.finish();
}

} // namespace

std::string toJson(const Model& model)
{
    return ModelWriter().write(model);
}

} // namespace ovra::plex::idl
