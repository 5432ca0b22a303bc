// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/dds/QosInEffect.hpp>
#include <plex/fastdds/Generation.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// How the quality of service of readers and writers comes about in code: layer upon layer, each with its
/// origin.
namespace ovra::plex::ps::internal
{

/// What an entity's URI, QoS list, properties and type ask of its quality of service.
struct QosWishes {
    std::int32_t deadlineMs; ///< 0 or less: none
    std::optional<fastdds::DataRepresentationId> representation;
    bool mayPreallocate;
    bool hasKey;
};

/// Changes some settings, each to a value that does not depend on what there was.
template <class Qos>
struct QosLayer {
    QosOrigin origin;
    std::string decidedBy;
    std::function<void(Qos&)> apply;
};

template <class Qos>
using QosLayers = std::vector<QosLayer<Qos>>;

using WriterLayers = QosLayers<eprosima::fastdds::dds::DataWriterQos>;
using ReaderLayers = QosLayers<eprosima::fastdds::dds::DataReaderQos>;

/// What makes a writer without a profile. @param historyDepth the default of Fast DDS where absent.
WriterLayers writerLayers(const QosWishes& wishes, std::optional<std::int32_t> historyDepth);

/// What makes a reader without a profile.
ReaderLayers readerLayers(const QosWishes& wishes);

/// What makes a reader for most recent values.
ReaderLayers mostRecentReaderLayers(const QosWishes& wishes);

/// What comes on top of a writer's profile, which cannot say the representation.
WriterLayers layersOnWriterProfile(const QosWishes& wishes);

/// The same for a reader.
ReaderLayers layersOnReaderProfile(const QosWishes& wishes);

template <class Qos>
void applyLayers(const QosLayers<Qos>& layers, Qos& qos)
{
    for (const auto& layer : layers) {
        layer.apply(qos);
    }
}

} // namespace ovra::plex::ps::internal
