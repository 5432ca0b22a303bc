// SPDX-License-Identifier: Apache-2.0
#include "SensorCdr.hpp"

#include "ValueFields.hpp"

#include <plex/module/CdrInput.hpp>
#include <plex/module/CdrOutput.hpp>

namespace ovra::plex::ps::cdr
{

template <>
struct Fields<generated::dds_::keyed::Sensor> {
    static constexpr Extensibility extensibility = Extensibility::Appendable;

    template <class Value, class Visit>
    static void forEach(Value& value, const Visit& visit)
    {
        visit(Field<0, Text<64>>(), value.name());
        visit(Field<1>(), value.value());
    }

    template <class Value, class Visit>
    static void forEachKey(Value& value, const Visit& visit)
    {
        visit(Field<0, Text<64>>(), value.name());
    }
};

} // namespace ovra::plex::ps::cdr

namespace eprosima::fastcdr
{

namespace members = ovra::plex::ps::cdr;

template <>
std::size_t calculate_serialized_size(CdrSizeCalculator& calculator,
                                      const generated::dds_::keyed::Sensor& data,
                                      std::size_t& currentAlignment)
{
    return members::fieldsSize(calculator.get_cdr_version(), data, currentAlignment);
}

template <>
void serialize(Cdr& cdr, const generated::dds_::keyed::Sensor& data)
{
    members::serializeFields(cdr, data);
}

template <>
void deserialize(Cdr& cdr, generated::dds_::keyed::Sensor& data)
{
    deserialize(cdr, data, members::encodingOf(members::Extensibility::Appendable, cdr.get_cdr_version()));
}

void deserialize(Cdr& cdr, generated::dds_::keyed::Sensor& data, EncodingAlgorithmFlag encoding)
{
    members::deserializeFields(cdr, encoding, data);
}

void serialize_key(Cdr& cdr, const generated::dds_::keyed::Sensor& data)
{
    members::serializeKeyFields(cdr, data);
}

} // namespace eprosima::fastcdr
