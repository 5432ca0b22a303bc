// SPDX-License-Identifier: Apache-2.0
#include "Slots.hpp"

#include "Template.hpp"

#include <utility>

namespace ovra::plex::idl
{

namespace
{

Slot getter(const MemberPlan& plan, const std::string& result, const std::string& body)
{
    return {result, "get" + plan.accessor, "", body, true};
}

Slot setter(const MemberPlan& plan, const std::string& parameter, const std::string& body)
{
    return {"void", "set" + plan.accessor, parameter + " " + plan.name, body, false};
}

std::uint32_t boundOf(const MemberPlan& plan)
{
    const Type& type = resolved(*plan.member->type);
    const auto* const text = as<StringType>(type);
    const auto* const sequence = as<SequenceType>(type);
    if (text != nullptr) {
        return text->bound;
    }
    return sequence == nullptr ? 0 : boundOf(*sequence);
}

/// A call of a function that knows the member's name and bound.
std::string checked(const std::string& function, const MemberPlan& plan, const std::string& arguments,
                    const std::string& more = {})
{
    return "ovra::plex::ps::" + function + "(" + quoted(plan.member->name) + ", " + arguments + ", " +
           std::to_string(boundOf(plan)) + more + ");";
}

std::vector<Slot> slotsOfSmall(const MemberPlan& plan)
{
    return {getter(plan, plan.wireType, "return " + plan.field + ";"),
            setter(plan, plan.wireType, plan.field + " = " + plan.name + ";")};
}

std::vector<Slot> slotsOfText(const MemberPlan& plan)
{
    if (plan.isOptional()) {
        return {getter(plan, "std::optional<std::string_view>", "return " + plan.field + ";"),
                setter(plan, "std::optional<std::string_view>",
                       checked("assignText", plan, plan.field + ", " + plan.name))};
    }
    return {getter(plan, "std::string_view", "return " + plan.field + ";"),
            setter(plan, "std::string_view", checked("assignText", plan, plan.field + ", " + plan.name))};
}

std::string elementType(const MemberPlan& plan)
{
    return cppType(*as<SequenceType>(resolved(*plan.member->type))->element);
}

/// What elements are at first, as a further argument; nothing where they are so by themselves.
std::string initialElement(const MemberPlan& plan)
{
    const Type& element = resolved(*as<SequenceType>(resolved(*plan.member->type))->element);
    const std::string value =
        element.kind == TypeKind::Enum || element.kind == TypeKind::Array ? initialValue(element) : "";
    return value.empty() || value == "{}" ? "" : ", " + value;
}

std::vector<Slot> slotsOfSequence(const MemberPlan& plan)
{
    const std::string span = "ovra::plex::Span<" + elementType(plan) + ">";
    const std::string constSpan = "ovra::plex::Span<const " + elementType(plan) + ">";
    const Slot resize{
        span, "resize" + plan.accessor, "std::size_t size",
        "return " + checked("resizeSequence", plan, plan.field + ", size", initialElement(plan)), false};
    return {getter(plan, constSpan, "return " + plan.field + ";"), resize,
            setter(plan, constSpan, checked("assignSequence", plan, plan.field + ", " + plan.name))};
}

std::vector<Slot> slotsOfWhole(const MemberPlan& plan)
{
    const std::string reference = "const " + plan.valueType + "&";
    const Slot edit{plan.valueType + "&", "edit" + plan.accessor, "", "return " + plan.field + ";", false};
    return {getter(plan, reference, "return " + plan.field + ";"), edit,
            setter(plan, reference, plan.field + " = " + plan.name + ";")};
}

/// An optional one that is seen through a pointer.
std::vector<Slot> slotsOfOptional(const MemberPlan& plan)
{
    const std::string& field = plan.field;
    const Slot make{plan.valueType + "&", "make" + plan.accessor, "",
                    "return " + field + " ? *" + field + " : " + field + ".emplace();", false};
    const Slot reset{"void", "reset" + plan.accessor, "", field + ".reset();", false};
    return {
        getter(plan, "const " + plan.valueType + "*", "return " + field + " ? &*" + field + " : nullptr;"),
        make, reset};
}

} // namespace

std::vector<Slot> slotsOf(const MemberPlan& plan)
{
    switch (plan.shape) {
    case Shape::Small:
        return slotsOfSmall(plan);
    case Shape::Text:
        return slotsOfText(plan);
    case Shape::Sequence:
        return plan.isOptional() ? slotsOfOptional(plan) : slotsOfSequence(plan);
    case Shape::Whole:
        break;
    }
    return plan.isOptional() ? slotsOfOptional(plan) : slotsOfWhole(plan);
}

bool isSeenThroughPointer(const MemberPlan& plan)
{
    return plan.isOptional() && (plan.shape == Shape::Sequence || plan.shape == Shape::Whole);
}

} // namespace ovra::plex::idl
