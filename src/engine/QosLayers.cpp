// SPDX-License-Identifier: Apache-2.0
#include "QosLayers.hpp"

#include <plex/ps/internal/Settings.hpp>
#include <plex/ps/internal/Time.hpp>

#include <fastdds/dds/publisher/qos/DataWriterQos.hpp>
#include <fastdds/dds/subscriber/qos/DataReaderQos.hpp>

#include <utility>

namespace ovra::plex::ps::internal
{

namespace dds = eprosima::fastdds::dds;

namespace
{

/// A writer or reader keeps all samples up to a number of them.
template <class Qos>
void keepAll(Qos& qos, std::optional<std::int32_t> historyDepth, fastdds::HistoryMemory memory)
{
    qos.history().kind = dds::KEEP_ALL_HISTORY_QOS;
    qos.history().depth = historyDepth.value_or(qos.history().depth);
    qos.resource_limits().max_samples = 40000;
    qos.resource_limits().max_instances = 100;
    qos.endpoint().history_memory_policy = memory;
}

template <class Qos, class Apply>
QosLayer<Qos> ofLibrary(Apply apply)
{
    return {QosOrigin::LibraryDefault, "", std::move(apply)};
}

template <class Qos>
void addDeadline(QosLayers<Qos>& layers, const QosWishes& wishes)
{
    if (wishes.deadlineMs > 0) {
        layers.push_back({QosOrigin::Argument, "qos::Deadline", [milliseconds = wishes.deadlineMs](Qos& qos) {
                              qos.deadline().period = deadlinePeriod(milliseconds);
                          }});
    }
}

template <class Qos, class Set>
void addRepresentation(QosLayers<Qos>& layers, const QosWishes& wishes, Set set)
{
    if (wishes.representation) {
        layers.push_back({QosOrigin::Property, "dds.data_representation", std::move(set)});
    }
}

} // namespace

WriterLayers layersOnWriterProfile(const QosWishes& wishes)
{
    WriterLayers layers;
    addRepresentation(layers, wishes, [wishes](dds::DataWriterQos& qos) {
        setRepresentation(qos, wishes.representation, wishes.mayPreallocate);
    });
    return layers;
}

ReaderLayers layersOnReaderProfile(const QosWishes& wishes)
{
    ReaderLayers layers;
    addRepresentation(layers, wishes,
                      [wishes](dds::DataReaderQos& qos) { setRepresentation(qos, wishes.representation); });
    return layers;
}

WriterLayers writerLayers(const QosWishes& wishes, std::optional<std::int32_t> historyDepth)
{
    WriterLayers layers;
    layers.push_back(ofLibrary<dds::DataWriterQos>([historyDepth](dds::DataWriterQos& qos) {
        keepAll(qos, historyDepth, fastdds::HistoryMemory::DYNAMIC_RESERVE_MEMORY_MODE);
    }));
    addDeadline(layers, wishes);
    for (auto& layer : layersOnWriterProfile(wishes)) { // last, as it may need another memory policy
        layers.push_back(std::move(layer));
    }
    return layers;
}

ReaderLayers readerLayers(const QosWishes& wishes)
{
    static constexpr std::int32_t historyDepth = 1000;
    ReaderLayers layers = layersOnReaderProfile(wishes);
    layers.push_back(ofLibrary<dds::DataReaderQos>([](dds::DataReaderQos& qos) {
        keepAll(qos, historyDepth, fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE);
    }));
    addDeadline(layers, wishes);
    return layers;
}

ReaderLayers mostRecentReaderLayers(const QosWishes& wishes)
{
    ReaderLayers layers = layersOnReaderProfile(wishes);
    layers.push_back(ofLibrary<dds::DataReaderQos>([hasKey = wishes.hasKey](dds::DataReaderQos& qos) {
        qos.history().kind = dds::KEEP_LAST_HISTORY_QOS;
        qos.history().depth = 1;
        qos.endpoint().history_memory_policy = fastdds::HistoryMemory::DYNAMIC_REUSABLE_MEMORY_MODE;
        if (hasKey) { // every instance counts, however many
            qos.resource_limits().max_instances = dds::LENGTH_UNLIMITED;
            qos.resource_limits().max_samples = dds::LENGTH_UNLIMITED;
        }
    }));
    return layers;
}

} // namespace ovra::plex::ps::internal
