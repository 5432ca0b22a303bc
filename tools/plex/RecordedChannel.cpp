// SPDX-License-Identifier: Apache-2.0
#include "RecordedChannel.hpp"

#include "Failure.hpp"

#include <plex/idl/Definition.hpp>
#include <plex/idl/Parse.hpp>

#include <memory>
#include <src/engine/Compatibility.hpp>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

using Metadata = std::map<std::string, std::string>;

std::string valueOf(const Metadata& metadata, const std::string& key)
{
    const auto found = metadata.find(key);
    return found == metadata.end() ? "" : found->second;
}

std::vector<std::string> partitionsOf(const Metadata& metadata)
{
    const auto json = Json::parse(valueOf(metadata, "dds.partitions"), nullptr, false);
    std::vector<std::string> partitions;
    if (json.is_array()) {
        for (const auto& each : json) {
            if (each.is_string()) {
                partitions.push_back(each.get<std::string>());
            }
        }
    }
    return partitions;
}

/// A reader that every writer suits that offers what the recorded one did.
fastdds::AnnouncedEndpoint suitedBy(const Metadata& metadata)
{
    fastdds::AnnouncedEndpoint reader;
    reader.deadline = dds::DeadlineQosPolicy().period;
    reader.livelinessLease = dds::LivelinessQosPolicy().lease_duration;
    reader.durability = valueOf(metadata, "dds.qos.durability") == "volatile"
                            ? dds::VOLATILE_DURABILITY_QOS
                            : dds::TRANSIENT_LOCAL_DURABILITY_QOS;
    reader.ownership = valueOf(metadata, "dds.qos.ownership") == "exclusive" ? dds::EXCLUSIVE_OWNERSHIP_QOS
                                                                             : dds::SHARED_OWNERSHIP_QOS;
    reader.partitions = partitionsOf(metadata);
    return reader;
}

/// The type that a schema describes. @returns nothing: it describes none.
std::optional<KnownType> typeOf(const mcap::Schema& schema, const Metadata& metadata)
{
    if (schema.encoding != "omgidl") {
        return std::nullopt;
    }
    auto result = idl::parseText(schema.data, schema.name);
    const auto* const found = result.model ? result.model->findType(schema.name) : nullptr;
    const auto* const type = found == nullptr ? nullptr : idl::as<idl::StructType>(*found);
    if (!result.model || type == nullptr) {
        return std::nullopt;
    }
    idl::CodecOptions codec;
    codec.delimitsEnumerations = valueOf(metadata, "plex.enum-delimiters") == "standard";
    return KnownType{std::make_shared<const idl::Model>(*std::move(result.model)), type,
                     valueOf(metadata, "dds.type"), codec,
                     valueOf(metadata, "plex.key-hash") == "xcdr2" ? idl::XcdrVersion::Xcdr2
                                                                   : idl::XcdrVersion::Xcdr1};
}

} // namespace

mcap::Channel channelOf(const Scene& scene, const fastdds::AnnouncedEndpoint& writer, const KnownType* type)
{
    mcap::Channel channel;
    channel.topic = writer.topic;
    channel.encoding = "cdr";
    auto& metadata = channel.metadata;
    metadata["dds.type"] = writer.type;
    metadata["dds.keyed"] = hasKey(writer.guid) ? "true" : "false";
    metadata["dds.writer"] = guidInWords(writer.guid);
    metadata["dds.publisher"] = shortPlace(scene, writer.guid);
    metadata["dds.partitions"] = Json(writer.partitions).dump(-1, ' ', false, Json::error_handler_t::replace);
    for (const auto& policy : ps::internal::policiesOf(writer)) {
        metadata["dds.qos." + policy.name] = policy.value;
    }
    if (type != nullptr) {
        metadata["plex.enum-delimiters"] = type->codec.delimitsEnumerations ? "standard" : "none";
        metadata["plex.key-hash"] = type->keyVersion == idl::XcdrVersion::Xcdr2 ? "xcdr2" : "xcdr1";
    }
    return channel;
}

mcap::Schema schemaOf(const KnownType& type)
{
    return {0, type.type->scopedName, "omgidl", idl::definitionOf(*type.model, {type.type})};
}

Replayable replayableOf(const mcap::Channel& channel, const mcap::Schema* schema, const TypeOptions& options)
{
    if (channel.encoding != "cdr") {
        throw Failure(ExitCode::Usage,
                      "its values are encoded as \"" + channel.encoding + R"(", not as "cdr")");
    }
    const auto& metadata = channel.metadata;
    Replayable replayable;
    replayable.suited = suitedBy(metadata);
    replayable.isXcdr2 = valueOf(metadata, "dds.qos.data representation") == "xcdr2";
    replayable.type = valueOf(metadata, "dds.type");
    auto known = schema == nullptr ? std::nullopt : typeOf(*schema, metadata);
    const bool isForeign = replayable.type.empty();
    if (isForeign) {
        if (!known) {
            throw Failure(ExitCode::Usage, "nothing says what its type is called in DDS");
        }
        replayable.type = known->type->scopedName;
    }
    replayable.keyed = isForeign ? known->type->hasKey : valueOf(metadata, "dds.keyed") == "true";
    if (replayable.keyed) {
        replayable.known = known ? std::move(known) : findType(replayable.type, options);
        if (!replayable.known) {
            throw Failure(ExitCode::NotFound,
                          "its type \"" + replayable.type +
                              "\" has a key and is unknown: name its definition with --idl");
        }
    }
    return replayable;
}

} // namespace ovra::plex::tool
