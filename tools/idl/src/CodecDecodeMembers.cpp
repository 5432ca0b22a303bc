// SPDX-License-Identifier: Apache-2.0
// Structs and unions, and what stands around their members.
#include "CodecDecoder.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace ovra::plex::idl
{

// --- Delimited parts ---------------------------------------------------------------------------------------

std::size_t Decoder::beginDelimited()
{
    const auto length = input_.number<std::uint32_t>();
    if (length > input_.remaining()) {
        input_.fail("the delimiter header counts " + std::to_string(length) + " bytes, " +
                    std::to_string(input_.remaining()) + " are left");
    }
    return input_.setEnd(input_.position() + length);
}

void Decoder::endDelimited(std::size_t outerEnd)
{
    if (input_.remaining() != 0) {
        input_.fail("the delimiter header counts " + std::to_string(input_.remaining()) + " bytes more");
    }
    input_.setEnd(outerEnd);
}

// --- Parameters --------------------------------------------------------------------------------------------

std::optional<Parameter> Decoder::parameterOfVersion1()
{
    input_.align(4);
    const auto flagsAndId = input_.number<std::uint16_t>();
    Parameter result{flagsAndId & 0x3FFFU, (flagsAndId & 0x4000U) != 0, input_.number<std::uint16_t>()};
    if (result.id == EndOfParameters) {
        return std::nullopt;
    }
    if (result.id == ExtendedParameter) {
        if (result.size != 8) {
            input_.fail("the header of an extended parameter has 8 bytes, not " +
                        std::to_string(result.size));
        }
        result.id = input_.number<std::uint32_t>();
        result.size = input_.number<std::uint32_t>();
    } else if (result.id > HighestShortId && result.id != IgnoredParameter) {
        input_.fail("the parameter id " + std::to_string(result.id) + " is reserved");
    }
    input_.beginAlignment();
    return result;
}

Parameter Decoder::parameterOfVersion2()
{
    const auto header = input_.number<std::uint32_t>();
    const std::uint32_t code = header >> 28U & 7U;
    Parameter result{header & 0x0FFFFFFFU, header >> 31U != 0, std::uint64_t{1} << code};
    if (code == 4) {
        result.size = input_.number<std::uint32_t>();
    } else if (code > 4) {
        const std::size_t begin = input_.position();
        const unsigned shift = code == 5 ? 0 : code - 4; // units of 1, 4 or 8 bytes
        result.size = 4 + (std::uint64_t{input_.number<std::uint32_t>()} << shift);
        input_.rewind(begin); // those 32 bits are the value's, too
    }
    return result;
}

std::optional<Parameter> Decoder::parameter()
{
    auto result = encapsulation_.version == XcdrVersion::Xcdr1 ? parameterOfVersion1()
                                                               : std::optional(parameterOfVersion2());
    if (result && result->size > input_.remaining()) {
        input_.fail("member " + std::to_string(result->id) + " has " + std::to_string(result->size) +
                    " bytes by its header, " + std::to_string(input_.remaining()) + " are left");
    }
    return result;
}

Datum Decoder::parameterValue(const Type& type, const Parameter& parameter)
{
    const std::size_t outerEnd = input_.setEnd(input_.position() + parameter.size);
    Datum result = value(type);
    const std::size_t left = input_.remaining();
    if (left > (encapsulation_.version == XcdrVersion::Xcdr1 ? 3 : 0)) { // version 1 may pad the value
        input_.fail("the member has " + std::to_string(parameter.size) +
                    " bytes by its header, its value has " + std::to_string(parameter.size - left));
    }
    input_.skip(left);
    input_.setEnd(outerEnd);
    return result;
}

void Decoder::skip(const Parameter& parameter)
{
    const bool isIgnored = encapsulation_.version == XcdrVersion::Xcdr1 && parameter.id == IgnoredParameter;
    if (parameter.mustUnderstand && !isIgnored) {
        input_.fail("member " + std::to_string(parameter.id) + " must be understood, and is not known");
    }
    input_.skip(parameter.size);
}

// --- Structs -----------------------------------------------------------------------------------------------

Datum Decoder::structure(const StructType& type, Layout layout)
{
    StructDatum result;
    switch (layout) {
    case Layout::Plain:
        plainMembers(result, type);
        break;
    case Layout::Delimited:
        delimitedMembers(result, type);
        break;
    case Layout::Parameters:
        listedMembers(result, type);
        break;
    }
    return {std::move(result)};
}

void Decoder::plainMembers(StructDatum& value, const StructType& type)
{
    for (const Member* const member : members_.of(type)) {
        memberInPlace(value, *member);
    }
}

void Decoder::delimitedMembers(StructDatum& value, const StructType& type)
{
    delimited([&] {
        for (const Member* const member : members_.of(type)) {
            if (input_.remaining() == 0) {
                return; // an older version of the type ends here
            }
            memberInPlace(value, *member);
        }
        input_.skip(input_.remaining()); // a newer one has more
    });
}

void Decoder::memberInPlace(StructDatum& result, const Member& member)
{
    const CodecPath::Step step(path_, member.name);
    if (!member.optional) {
        result.members.push_back({&member, value(*member.type)});
    } else if (encapsulation_.version == XcdrVersion::Xcdr2) {
        if (boolean()) {
            result.members.push_back({&member, value(*member.type)});
        }
    } else {
        const auto header = parameter();
        if (!header || header->id != member.id) {
            input_.fail("the header of an optional member has the id " +
                        std::to_string(header ? header->id : EndOfParameters) + ", not " +
                        std::to_string(member.id));
        }
        if (header->size != 0) {
            result.members.push_back({&member, parameterValue(*member.type, *header)});
        }
    }
}

void Decoder::listedMembers(StructDatum& value, const StructType& type)
{
    const auto& members = members_.of(type);
    std::size_t next = 0; // where the member is that comes next if they are in order
    parameters([&](const Parameter& parameter) {
        for (std::size_t i = 0; i < members.size(); ++i) {
            const std::size_t candidate = (next + i) % members.size();
            if (members[candidate]->id == parameter.id) {
                next = candidate + 1;
                listedMember(value, *members[candidate], parameter);
                return;
            }
        }
        skip(parameter);
    });
}

void Decoder::listedMember(StructDatum& result, const Member& member, const Parameter& parameter)
{
    const CodecPath::Step step(path_, member.name);
    if (member.optional && parameter.size == 0) {
        return;
    }
    Datum value = parameterValue(*member.type, parameter);
    const auto found = std::ranges::find(result.members, &member, &MemberDatum::member);
    if (found != result.members.end()) {
        found->value = std::move(value);
    } else {
        result.members.push_back({&member, std::move(value)});
    }
}

// --- Unions ------------------------------------------------------------------------------------------------

Datum Decoder::choice(const UnionType& type, Layout layout)
{
    UnionDatum result;
    const auto read = [&] {
        discriminator(result, type);
        selected(result, type);
    };
    if (layout == Layout::Parameters) {
        listedChoice(result, type);
    } else if (layout == Layout::Delimited) {
        delimited([&] {
            read();
            input_.skip(input_.remaining());
        });
    } else {
        read();
    }
    return {std::move(result)};
}

void Decoder::discriminator(UnionDatum& result, const UnionType& type)
{
    const CodecPath::Step step(path_, "discriminator");
    const Datum number = value(*type.discriminator);
    check(faultOfCase(type, number, options_));
    result.discriminator = discriminatorBits(number);
}

void Decoder::selected(UnionDatum& result, const UnionType& type)
{
    if (const UnionCase* const one = type.caseOf(result.discriminator)) {
        const CodecPath::Step step(path_, one->name);
        result.member.push_back(value(*one->type));
    }
}

void Decoder::listedChoice(UnionDatum& result, const UnionType& type)
{
    bool hasDiscriminator = false;
    parameters([&](const Parameter& parameter) {
        if (hasDiscriminator) {
            listedCase(result, type, parameter);
            return;
        }
        if (parameter.id != DiscriminatorId) {
            input_.fail("member " + std::to_string(parameter.id) + " comes before the discriminator");
        }
        const CodecPath::Step step(path_, "discriminator");
        const Datum number = parameterValue(*type.discriminator, parameter);
        check(faultOfCase(type, number, options_));
        result.discriminator = discriminatorBits(number);
        hasDiscriminator = true;
    });
    if (!hasDiscriminator) {
        input_.fail("the discriminator is missing");
    }
    if (result.member.empty() && type.caseOf(result.discriminator) != nullptr) {
        result.member.emplace_back();
    }
}

void Decoder::listedCase(UnionDatum& result, const UnionType& type, const Parameter& parameter)
{
    const UnionCase* const one = type.caseOf(result.discriminator);
    if (one == nullptr || one->id != parameter.id) {
        skip(parameter);
        return;
    }
    const CodecPath::Step step(path_, one->name);
    result.member.clear();
    result.member.push_back(parameterValue(*one->type, parameter));
}

} // namespace ovra::plex::idl
