// SPDX-License-Identifier: Apache-2.0
#include "Declarations.hpp"

#include "Expressions.hpp"
#include "Types.hpp"

#include <filesystem>
#include <utility>

namespace ovra::plex::idl
{

NamedType* findForward(Context& context, DeclarationTables& tables, const Token& name, TypeKind kind)
{
    const Symbol* const known = context.scopes.of(*context.module).find(name.text);
    auto* const* const type = known == nullptr ? nullptr : std::get_if<NamedType*>(&known->meaning);
    if (type == nullptr || (*type)->kind != kind || known->name != name.text ||
        tables.forward.erase(*type) == 0) {
        return nullptr;
    }
    (*type)->location = name.place;
    (*type)->included = context.reporter.isIncluded(name.place);
    return *type;
}

bool declareType(Context& context, NamedType& type, const Token& name)
{
    type.name = name.text;
    type.location = name.place;
    type.module = context.module;
    type.scopedName = scopedNameIn(*context.module, type.name);
    type.included = context.reporter.isIncluded(name.place);
    return declare(context, context.scopes.of(*context.module), {&type, type.name, name.place});
}

void finishType(Context& context, NamedType& type, const Token& name, const Beginning& beginning,
                std::size_t last)
{
    describe(context, type, name, beginning.first, beginning.annotated, last);
    beginning.annotations.applyTo(context, type);
    context.incomplete.erase(&type);
    context.builder.add(*context.module, type);
}

namespace
{

/// Whether a file is a certain one, or lies below a folder.
bool liesBelow(const std::string& file, const std::string& place)
{
    const std::string path = std::filesystem::path(file).lexically_normal().string();
    const std::string start = std::filesystem::path(place).lexically_normal().string();
    return path.starts_with(start) && (path.size() == start.size() || path[start.size()] == '/');
}

} // namespace

Extensibility extensibilityOf(Context& context, const AnnotationList& annotations, const Token& name)
{
    Extensibility result = context.options.extensibility;
    if (context.reporter.isIncluded(name.place)) {
        for (const auto& [place, extensibility] : context.options.includedExtensibilities) {
            result = liesBelow(context.reporter.path(name.place), place) ? extensibility : result;
        }
    }
    return annotations.extensibility(context).value_or(result);
}

bool isNested(Context& context, const AnnotationList& annotations)
{
    if (const auto own = annotations.flag(context, "nested")) {
        return *own;
    }
    for (const Module* module = context.module; module != nullptr; module = module->parent) {
        for (const Annotation& annotation : module->annotations) {
            if (annotation.name == "default_nested") {
                return annotation.parameters.empty() || annotation.parameters[0].text == "TRUE";
            }
        }
    }
    return false;
}

void readTypedef(Context& context, DeclarationTables& tables, Beginning beginning)
{
    beginning.annotations.append(AnnotationList::read(context)); // they may stand before the type as well
    beginning.annotations.check(context, Annotated::Alias);
    const Location place = context.tokens.peek().place;
    const Type& type = readType(context);
    const auto declarators = readDeclarators(context, "the typedef", type);
    for (const Declarator& declarator : declarators) {
        auto& alias = beginType<AliasType>(context, tables, declarator.name);
        alias.target = declarator.type;
        deepen(context, alias, *alias.target, place);
        annotate(context, alias, *alias.target, beginning.annotations);
        finishType(context, alias, declarator.name, beginning, context.tokens.position());
    }
}

void readConstant(Context& context, const Beginning& beginning)
{
    TokenCursor& tokens = context.tokens;
    beginning.annotations.check(context, Annotated::Constant);
    Constant& constant = context.builder.makeConstant();
    const Location place = tokens.peek().place;
    constant.type = &readType(context);
    const TypeKind kind = resolved(*constant.type).kind;
    const bool isPossible = isPrimitive(kind) || kind == TypeKind::String || kind == TypeKind::WString ||
                            kind == TypeKind::Enum || kind == TypeKind::Bitmask;
    if (!isPossible) {
        context.reporter.error(place, "a constant can not be " + toString(*constant.type));
        throw SyntaxError();
    }
    const Token name = readName(context, "the constant");
    tokens.expect("=");
    auto value = readValue(context, *constant.type);
    describe(context, constant, name, beginning.first, beginning.annotated, tokens.position());
    beginning.annotations.applyTo(context, constant);
    constant.module = context.module;
    constant.scopedName = scopedNameIn(*context.module, constant.name);
    constant.included = context.reporter.isIncluded(name.place);
    constant.value = value ? std::move(*value) : Value(std::uint64_t{1}); // that it has none was reported
    const Symbol symbol{static_cast<const Constant*>(&constant), constant.name, name.place};
    if (declare(context, context.scopes.of(*context.module), symbol)) {
        context.builder.add(*context.module, constant);
    }
}

} // namespace ovra::plex::idl
