// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/PlexException.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

/// What the publishers and subscribers of the DDS transport are set to, and who has said so.
///
/// The functions take what an application holds: a `Publisher<T>`, `InstancePublisher<T>`, `Subscriber<T>` or
/// `MrvSubscriber<T>`. Nothing else of DDS is needed to use them, and nothing has to be linked.
namespace ovra::plex::ps
{

/// Who has decided a setting. Where several agree, it is the one that was asked last.
enum class QosOrigin {
    DdsDefault,     ///< nobody: it is the default of DDS
    LibraryDefault, ///< this library, where no profile is used
    Profile,        ///< a QoS profile
    Property,       ///< a property
    Uri,            ///< the URI
    Argument,       ///< an object of the list of QoS objects that was given
    Environment     ///< what the process or its participant has found: a variable or a default profile
};

/// A setting of a publisher or subscriber.
struct QosSetting {
    std::string name;  ///< "reliability", "history depth", …
    std::string value; ///< in words, with its unit
    QosOrigin origin = QosOrigin::DdsDefault;
    std::string decidedBy; ///< the name of the profile, property, QoS object or variable; else empty
    std::string file; ///< the profile's, where it was found by property "dds.qos.profile.file"; else empty
};

/// What the DDS transport's publishers and subscribers are besides what their contract says. Applications use
/// the functions below.
///
/// Threads: any.
class PLEX_EXPORT ConfiguredEntity
{
public:
    virtual std::vector<QosSetting> qosInEffect() const = 0;

protected:
    ConfiguredEntity() = default;
    ConfiguredEntity(const ConfiguredEntity&) = default;
    ConfiguredEntity& operator=(const ConfiguredEntity&) = default;
    ~ConfiguredEntity() = default;
};

/// The settings of a publisher or subscriber, in a fixed order.
///
/// It takes some milliseconds where profiles are used, as their file is read again to see what it says.
/// @throws PlexException when the entity is another transport's; IllegalStateException when it is closed.
template <class Entity>
std::vector<QosSetting> qosInEffect(const Entity& entity)
{
    const auto* const configured = dynamic_cast<const ConfiguredEntity*>(&entity);
    if (configured == nullptr) {
        throw PlexException("The entity is not one of the DDS transport, which alone tells its settings");
    }
    return configured->qosInEffect();
}

/// An origin in a word or two: "DDS default", "library default", "profile", "property", "URI", "argument" or
/// "environment".
inline std::string toString(QosOrigin origin)
{
    constexpr std::array names{"DDS default", "library default", "profile",    "property",
                               "URI",         "argument",        "environment"};
    const auto index = static_cast<std::size_t>(origin);
    return index < names.size() ? names.at(index) : std::string();
}

/// Settings as text, a line for each: its name, its value and its origin, in columns.
inline std::string toText(const std::vector<QosSetting>& settings)
{
    std::size_t nameWidth = 0;
    std::size_t valueWidth = 0;
    for (const auto& setting : settings) {
        nameWidth = std::max(nameWidth, setting.name.size());
        valueWidth = std::max(valueWidth, setting.value.size());
    }
    std::string text;
    for (const auto& setting : settings) {
        text += setting.name + std::string(nameWidth + 2 - setting.name.size(), ' ');
        text += setting.value + std::string(valueWidth + 2 - setting.value.size(), ' ');
        text += toString(setting.origin);
        text += setting.decidedBy.empty() ? "" : " " + setting.decidedBy;
        text += setting.file.empty() ? "" : " of " + setting.file;
        text += '\n';
    }
    return text;
}

namespace detail
{

/// A text as JSON (RFC 8259, 7); bytes beyond ASCII are taken for UTF-8.
inline std::string toJson(const std::string& text)
{
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
            json += escape.data();
        } else {
            json += c;
        }
    }
    return json + '"';
}

} // namespace detail

/// Settings as JSON: an object with one member for each, by its name; what is empty is left out.
///
///     {"reliability": {"value": "reliable", "origin": "profile", "decidedBy": "reliable.writer",
///                      "file": "profiles/plex.xml"}, …}
inline std::string toJson(const std::vector<QosSetting>& settings)
{
    std::string json = "{";
    for (const auto& setting : settings) {
        json += (json.size() == 1 ? "\n  " : ",\n  ") + detail::toJson(setting.name);
        json += R"(: {"value": )" + detail::toJson(setting.value);
        json += R"(, "origin": )" + detail::toJson(toString(setting.origin));
        json += setting.decidedBy.empty() ? "" : R"(, "decidedBy": )" + detail::toJson(setting.decidedBy);
        json += setting.file.empty() ? "" : R"(, "file": )" + detail::toJson(setting.file);
        json += "}";
    }
    return json + (settings.empty() ? "}\n" : "\n}\n");
}

} // namespace ovra::plex::ps
