// SPDX-License-Identifier: Apache-2.0
// What is generated for a model, before it is written: which topics there are, and how their members are
// called.
#pragma once

#include "CppTypes.hpp"

#include <plex/idl/Generate.hpp>

#include <string>
#include <vector>

namespace ovra::plex::idl
{

/// A member of a topic, those of its bases included.
struct MemberPlan {
    const Member* member = nullptr;
    Shape shape = Shape::Small;
    std::string accessor;  ///< "WindSpeed", behind get and set
    std::string name;      ///< of the wire type's accessors and of parameters: "wind_speed"
    std::string field;     ///< of the wire type and the adapter: "wind_speed_"
    std::string valueType; ///< "double"
    std::string wireType;  ///< the same, or std::optional of it

    bool isOptional() const { return member->optional; }
};

/// A topic.
struct TopicPlan {
    const StructType* type = nullptr;
    std::string name;       ///< of its classes: "Shutter"
    std::string scope;      ///< of its abstract class: "dome"
    std::string symbol;     ///< behind generated_dds_Publisher_: "dome_Shutter"
    std::string header;     ///< of its abstract class: "dome/Shutter.hpp"
    std::string folder;     ///< below dds/, of what binds it to DDS: "" or "inner/"
    std::string ddsName;    ///< of its type in DDS
    std::string definition; ///< of its type and all that it is made of
    EncodingRules rules;
    std::vector<MemberPlan> members;

    std::vector<const MemberPlan*> keys() const;
};

/// All of it.
struct Plan {
    EncodingRules rules;
    std::vector<TopicPlan> topics;
    std::vector<const NamedType*> declared; ///< that get a plain form: types of the named files
    std::vector<const Constant*> constants; ///< of the named files
    /// Structs and unions that are encoded within topics, those of included files as well.
    std::vector<const NamedType*> encoded;

    bool isTopic(const NamedType& type) const;
};

/// Whether the encoding of a topic needs no more than its members in their order: it is appendable, and they
/// are numbers and the like without defaults.
bool isSimple(const TopicPlan& topic);

/// The name of a parameter whose members are used; in a comment where the topic has none.
std::string parameterName(const std::string& name, const TopicPlan& topic);

/// @param diagnostics what can not be generated.
Plan planOf(const Model& model, const GenerateOptions& options, Diagnostics& diagnostics);

} // namespace ovra::plex::idl
