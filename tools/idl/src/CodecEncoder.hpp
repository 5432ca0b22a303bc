// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CdrOutput.hpp"
#include "CodecTypes.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// Writes a value as CDR.
class Encoder
{
public:
    /// What of a value is written.
    enum class Part : std::uint8_t {
        All,
        Key ///< the members that identify an instance, without headers, as if all types were final
    };

    /// @param origin so many bytes stay free before it.
    Encoder(const Encoding& encoding, const CodecOptions& options, Part part, std::size_t origin);

    void write(const Type& declared, const Datum& datum);

    std::vector<std::uint8_t> take() { return output_.take(); }

private:
    void content(const Type& type, const Datum& datum);
    void boolean(bool boolean);
    void wideCharacter(char32_t character);
    void signedNumber(const Type& type, std::int64_t number);
    void unsignedNumber(const Type& type, std::uint64_t number);
    void string(const StringType& type, const std::string& text);
    void enumeration(const EnumType& type, std::int64_t number);
    void sequence(const SequenceType& type, const Datum& datum);
    void array(const ArrayType& type, const Datum& datum);
    void elements(const ArrayShape& shape, const Datum& datum);

    void structure(const StructType& type, const StructDatum& datum);
    void memberInPlace(const Member& member, const Datum* datum);
    void optionalInPlace(const Member& member, const Datum* datum);
    void choice(const UnionType& type, const UnionDatum& datum);
    void selected(const UnionType& type, const UnionDatum& datum);
    void selectedCase(const UnionCase& one, const UnionDatum& datum);

    template <class Write>
    void delimited(const Write& write);
    template <class Write>
    void list(const Type& element, const Write& write);
    template <class Write>
    void laidOut(Layout layout, const Write& write);
    template <class Write>
    void parameter(std::uint32_t id, bool mustUnderstand, const Type& type, const Write& write);
    template <class Write>
    void parameterOfVersion1(std::uint32_t id, bool mustUnderstand, const Write& write);
    template <class Write>
    void parameterOfVersion2(std::uint32_t id, bool mustUnderstand, const Type& type, const Write& write);
    void parameterHeader(std::uint32_t id, std::uint16_t flags, std::uint32_t size);

    Layout layoutOf(Extensibility extensibility) const;

    template <class T>
    const T& get(const Type& type, const Datum& datum) const;
    void check(const Fault& fault) const;

    CodecPath path_;
    CodecOptions options_;
    XcdrVersion version_;
    Part part_;
    CdrOutput output_;
    MemberLists members_;
    std::size_t emptyValues_ = 0;
};

} // namespace ovra::plex::idl
