// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QosLayers.hpp"

#include <plex/Plex.hpp>
#include <plex/dds/ProfileName.hpp>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Which settings a QoS object of Fast DDS has, in words, and who has decided each.
namespace ovra::plex::ps::internal
{

/// The profile that an entity is made from.
struct ProfileInUse {
    std::string name;
    std::string file;           ///< where it was found, or empty
    std::set<std::string> says; ///< what it says anything about: paths of elements
};

/// The profile of a kind by the properties; nothing where profiles are not used. Its file is read.
std::optional<ProfileInUse> profileInUse(const Plex::Properties& properties, ProfileType kind);

/// The names of the profiles of a kind in the file that the properties name.
std::set<std::string> profileNames(const Plex::Properties& properties, ProfileType kind);

/// One setting of a QoS object.
template <class Qos>
struct QosRow {
    const char* name;
    const char* element; ///< the path that a profile says it by, or empty where none can
    std::function<std::string(const Qos&)> inWords;
};

/// All settings of a QoS object that are worth knowing, and one that differs from the default in each.
template <class Qos>
struct QosRows {
    std::vector<QosRow<Qos>> rows;
    Qos other;
};

/// Of DataWriterQos, DataReaderQos, PublisherQos, SubscriberQos and DomainParticipantQos.
template <class Qos>
QosRows<Qos> qosRows();

/// Whether a layer decides a setting: it gives one and the same value to different objects.
template <class Qos>
bool decides(const QosLayer<Qos>& layer, const QosRow<Qos>& row, const Qos& other)
{
    Qos fromDefault;
    Qos fromOther = other;
    layer.apply(fromDefault);
    layer.apply(fromOther);
    return row.inWords(fromDefault) == row.inWords(fromOther);
}

/// Adds the settings of an object with their origins: the default of DDS, over that the profile, over that
/// the layers.
template <class Qos>
void addSettings(std::vector<QosSetting>& settings, const Qos& inEffect,
                 const std::optional<ProfileInUse>& profile, const QosLayers<Qos>& layers)
{
    const auto known = qosRows<Qos>();
    const Qos byDefault;
    for (const auto& row : known.rows) {
        QosSetting setting{row.name, row.inWords(inEffect), QosOrigin::DdsDefault, "", ""};
        const bool isDefault = setting.value == row.inWords(byDefault);
        if (profile && (!isDefault || profile->says.contains(row.element))) {
            setting.origin = QosOrigin::Profile;
            setting.decidedBy = profile->name;
            setting.file = profile->file;
        } else if (!isDefault) {
            setting.origin = QosOrigin::Environment;
        }
        for (const auto& layer : layers) {
            if (decides(layer, row, known.other)) {
                setting.origin = layer.origin;
                setting.decidedBy = layer.decidedBy;
                setting.file.clear();
            }
        }
        settings.push_back(std::move(setting));
    }
}

} // namespace ovra::plex::ps::internal
