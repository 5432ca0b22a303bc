// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CdrInput.hpp"
#include "CodecTypes.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ovra::plex::idl
{

/// What the header of a payload says.
struct Encapsulation {
    XcdrVersion version;
    Layout layout;
    std::endian order;
};

/// The header of a member, which says how long it is.
struct Parameter {
    std::uint32_t id = 0;
    bool mustUnderstand = false;
    std::uint64_t size = 0;
};

/// Reads a value from a payload.
class Decoder
{
public:
    Decoder(std::span<const std::uint8_t> payload, const CodecOptions& options)
        : options_(options)
        , input_(path_, payload, paddingOf(payload))
    {
        readHeader(payload);
    }

    Datum decode(const Type& declared);

private:
    static std::size_t paddingOf(std::span<const std::uint8_t> payload);

    void readHeader(std::span<const std::uint8_t> payload);
    void checkLayout(const Type& type);
    bool mayGoOn(const Type& type) const;

    Datum value(const Type& declared);
    Datum content(const Type& type);
    Datum content(const Type& type, Layout layout);

    bool boolean();
    std::int64_t signedNumber(std::uint32_t width);
    std::uint64_t unsignedNumber(std::uint32_t width);
    Datum string(const StringType& type);
    Datum enumeration(const EnumType& type);
    Datum sequence(const SequenceType& type);
    Datum array(const ArrayType& type);
    Datum octets(std::uint64_t count);
    Datum elements(const Type& element, std::uint64_t count, const std::vector<std::uint32_t>* dimensions);
    void checkElements(const Type& element, std::uint64_t count);

    Datum structure(const StructType& type, Layout layout);
    void memberInPlace(StructDatum& result, const Member& member);
    void plainMembers(StructDatum& value, const StructType& type);
    void delimitedMembers(StructDatum& value, const StructType& type);
    void listedMembers(StructDatum& value, const StructType& type);
    void listedMember(StructDatum& result, const Member& member, const Parameter& parameter);

    Datum choice(const UnionType& type, Layout layout);
    void discriminator(UnionDatum& result, const UnionType& type);
    void selected(UnionDatum& result, const UnionType& type);
    void listedChoice(UnionDatum& result, const UnionType& type);
    void listedCase(UnionDatum& result, const UnionType& type, const Parameter& parameter);

    /// Reads within the bytes that a delimiter header counts.
    template <class Read>
    void delimited(const Read& read);
    std::size_t beginDelimited();
    void endDelimited(std::size_t outerEnd);

    /// Calls with each member's header; the position is behind it.
    template <class Read>
    void parameters(const Read& read);
    std::optional<Parameter> parameter();
    std::optional<Parameter> parameterOfVersion1();
    Parameter parameterOfVersion2();
    Datum parameterValue(const Type& type, const Parameter& parameter);
    void skip(const Parameter& parameter);

    void check(const Fault& fault) const;

    CodecPath path_;
    CodecOptions options_;
    CdrInput input_;
    Encapsulation encapsulation_{};
    MemberLists members_;
    std::size_t emptyValues_ = 0;
};

template <class Read>
void Decoder::delimited(const Read& read)
{
    const std::size_t outerEnd = beginDelimited();
    read();
    endDelimited(outerEnd);
}

template <class Read>
void Decoder::parameters(const Read& read)
{
    if (encapsulation_.version == XcdrVersion::Xcdr2) {
        delimited([&] {
            while (input_.remaining() != 0) {
                read(*parameter());
            }
        });
    } else {
        while (const auto next = parameter()) {
            read(*next);
        }
    }
}

} // namespace ovra::plex::idl
