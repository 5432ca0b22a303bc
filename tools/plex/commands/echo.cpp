// SPDX-License-Identifier: Apache-2.0
#include "../Filter.hpp"
#include "../Interrupt.hpp"
#include "../Losses.hpp"
#include "../Output.hpp"
#include "../Text.hpp"
#include "../Words.hpp"
#include "Commands.hpp"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>

namespace ovra::plex::tool
{

namespace
{

/// The members that are a value's key. @returns null: its type has none.
Json keyOf(const idl::StructType& type, const Json& value)
{
    Json key;
    for (const auto* const member : allMembers(type)) {
        if (member->key) {
            key[member->name] = value.value(member->name, Json());
        }
    }
    return key;
}

/// What --key says of members: "upper" where the key has one member, else "name=upper,part=3".
std::map<std::string, std::string> parseKey(const std::string& text, const idl::StructType& type)
{
    const auto members = allMembers(type);
    const auto isKey = [](const auto* member) {
        return member->key;
    };
    const auto keys = std::ranges::count_if(members, isKey);
    if (keys == 0) {
        throw Failure(ExitCode::Usage, type.scopedName + " has no key");
    }
    if (keys == 1 && text.find('=') == std::string::npos) {
        return {{(*std::ranges::find_if(members, isKey))->name, text}};
    }
    std::map<std::string, std::string> wanted;
    for (std::string::size_type begin = 0; begin <= text.size();) {
        const auto end = keys == 1 ? text.size() : std::min(text.find(',', begin), text.size());
        const auto sign = text.find('=', begin);
        const auto name = text.substr(begin, std::min(sign, end) - begin);
        const auto member = std::ranges::find(members, name, [](const auto* each) { return each->name; });
        if (sign >= end || member == members.end() || !(*member)->key) {
            std::ostringstream fault;
            fault << "--key " << std::quoted(text) << ": " << std::quoted(name)
                  << " is no member of the key of " << type.scopedName << "; write it as member=value"
                  << (keys == 1 ? "" : ",member=value");
            throw Failure(ExitCode::Usage, fault.str());
        }
        wanted[name] = text.substr(sign + 1, end - sign - 1);
        begin = end + 1;
    }
    return wanted;
}

/// The instance that --key names.
Filter keyFilter(const std::string& text, const idl::StructType& type)
{
    const auto wanted = parseKey(text, type);
    return [wanted](const Json& value) {
        return std::ranges::all_of(wanted, [&](const auto& each) {
            const auto found = value.find(each.first);
            return found != value.end() &&
                   (found->is_string() ? found->template get<std::string>() : found->dump()) == each.second;
        });
    };
}

/// The values that Ctrl-C, --count or a closed pipe ends.
class Echo
{
public:
    Echo(const EchoOptions& options, Domain& domain, const RawReader& reader)
        : options_(options)
        , domain_(domain)
        , type_(findType(reader.type(), options.types))
        , template_(parseTemplate(options.format.empty() ? "{value}" : options.format,
                                  type_ ? type_->type : nullptr))
    {
        if (!type_) {
            refuseWithoutType(reader.type());
            return;
        }
        if (type_->type->hasKey != reader.keyed()) {
            remark("the definition of " + type_->type->scopedName + " has " +
                   (reader.keyed() ? "no key" : "a key") + ", unlike the topic's type");
        }
        if (!options.filter.empty()) {
            filters_.push_back(parseFilter(options.filter, *type_->type));
        }
        if (!options.key.empty()) {
            filters_.push_back(keyFilter(options.key, *type_->type));
        }
    }

    bool isDone() const { return options_.count > 0 && shown_ >= options_.count; }

    void add(const Received& received)
    {
        if (isDone()) {
            return;
        }
        losses_.add(received);
        if (received.isValue) {
            addValue(received);
        } else {
            addChange(received);
        }
    }

    void summarise(double seconds) const
    {
        remark(counted(shown_, "value") + " in " + inSeconds(seconds) + " from " +
               counted(losses_.writers(), "publisher") + ", " + std::to_string(losses_.lost()) + " lost" +
               (undecodable_ == 0 ? "" : ", " + std::to_string(undecodable_) + " not decodable"));
    }

private:
    void refuseWithoutType(const std::string& name) const
    {
        if (!options_.filter.empty() || !options_.key.empty()) {
            throw Failure(ExitCode::NotFound,
                          "type \"" + name +
                              "\" is unknown, so nothing can be asked of its values: name its "
                              "definition with --idl");
        }
        remark("type \"" + name + "\" is unknown, so its bytes are shown: name its definition with --idl");
    }

    void addValue(const Received& received)
    {
        Json value;
        std::string fault;
        if (type_) {
            try {
                const auto datum = idl::decode(*type_->type, received.sample.payload, type_->codec);
                value = Json::parse(idl::toJson(*type_->type, datum));
                remember(*type_, datum, value);
            } catch (const idl::CodecError& error) {
                fault = error.what();
                ++undecodable_;
            }
        }
        if (!std::ranges::all_of(filters_,
                                 [&](const Filter& filter) { return !value.is_null() && filter(value); })) {
            return;
        }
        ++shown_;
        if (options_.json) {
            writeJson(toJson(received, value, fault));
        } else {
            writeLine(type_ && !value.is_null() ? line(received, *type_->type, value)
                                                : line(received, bytesOf(received, fault)));
        }
    }

    /// An instance has come to its end.
    void addChange(const Received& received)
    {
        const auto known = keys_.find(received.instance);
        const Json key = known == keys_.end() ? Json() : known->second;
        if (!std::ranges::all_of(filters_,
                                 [&](const Filter& filter) { return !key.is_null() && filter(key); })) {
            return;
        }
        const char* const event = received.isDisposed ? "disposed" : "without writers";
        if (options_.json) {
            Json json = head(received);
            json["event"] = event;
            json["key"] = key;
            writeJson(json);
        } else if (options_.format.empty()) {
            const auto instance =
                key.is_null() ? "instance " + inHexadecimal(received.instance) : inOneLine(key);
            writeLine(line(received, coloured(instance + ": " + event, Colour::Yellow)));
        }
    }

    /// Keeps the key by its hash, which is all that a disposal has.
    void remember(const KnownType& type, const idl::Datum& datum, const Json& value)
    {
        if (!type.type->hasKey || keys_.size() >= mostKeys) {
            return;
        }
        if (const auto hash = idl::keyHash(*type.type, datum, type.keyVersion, type.codec)) {
            keys_.try_emplace(*hash, keyOf(*type.type, value));
        }
    }

    static std::string bytesOf(const Received& received, const std::string& fault)
    {
        constexpr std::size_t mostShown = 64;
        const auto& payload = received.sample.payload;
        const std::span<const std::uint8_t> first(payload.data(), std::min(payload.size(), mostShown));
        return (fault.empty() ? "" : coloured("not decodable: " + fault + "; ", Colour::Red)) +
               counted(payload.size(), "byte") + ": " + inHexadecimal(first) +
               (payload.size() > mostShown ? "…" : "");
    }

    static double ageOf(const Received& received)
    {
        return static_cast<double>(received.receptionTime - received.sourceTime) * 1e-9;
    }

    /// Who publishes, as people read it and as JSON.
    struct Publisher {
        std::string place;
        Json json;
    };

    const Publisher& publisherOf(const fastdds::Guid& writer)
    {
        auto& known = publishers_[writer];
        if (!known.json.contains("participant")) { // not yet announced
            const Scene scene = domain_.scene();
            known = {shortPlace(scene, writer), publisherJson(scene, writer)};
        }
        return known;
    }

    Json head(const Received& received)
    {
        Json json{{"topic", options_.topic}, {"time", nullptr}, {"age", nullptr}};
        if (received.sourceTime != 0) {
            json["time"] = inTimeOfDay(received.sourceTime);
            json["age"] = ageOf(received);
        }
        json["publisher"] = publisherOf(received.writer).json;
        json["sequence"] = received.sequence;
        return json;
    }

    Json toJson(const Received& received, const Json& value, const std::string& fault)
    {
        Json json = head(received);
        if (!value.is_null()) {
            json["value"] = value;
            return json;
        }
        if (!fault.empty()) {
            json["fault"] = fault;
        }
        json["bytes"] = inHexadecimal(received.sample.payload);
        return json;
    }

    Fields fieldsOf(const Received& received)
    {
        Fields fields;
        fields.topic = options_.topic;
        if (received.sourceTime != 0) {
            fields.time = inTimeOfDay(received.sourceTime);
            fields.age = inSeconds(ageOf(received));
        }
        fields.publisher = publisherOf(received.writer).place;
        return fields;
    }

    std::string line(const Received& received, const idl::StructType& type, const Json& value)
    {
        Fields fields = fieldsOf(received);
        fields.key = keyOf(type, value);
        fields.value = value;
        const auto text = template_(fields);
        return options_.format.empty() ? line(fields, text) : text;
    }

    std::string line(const Received& received, const std::string& text)
    {
        return line(fieldsOf(received), text);
    }

    /// The time of day to the microsecond, the age, the publisher, and the text.
    static std::string line(const Fields& fields, const std::string& text)
    {
        const auto time = fields.time.empty() ? std::string("no time") : fields.time.substr(11, 15);
        return coloured(padded(time, 15) + "  " + padded(fields.age, 8) + "  " + fields.publisher,
                        Colour::Dim) +
               "  " + text;
    }

    static constexpr std::size_t mostKeys = 10'000;

    const EchoOptions& options_;
    const Domain& domain_;
    const std::optional<KnownType> type_;
    const Template template_;
    std::vector<Filter> filters_; ///< all of which must hold
    std::map<KeyHash, Json> keys_;
    std::map<fastdds::Guid, Publisher> publishers_;
    Losses losses_;
    std::uint64_t shown_ = 0;
    std::uint64_t undecodable_ = 0;
};

} // namespace

ExitCode echo(const EchoOptions& options)
{
    Domain domain(options.domain, "plex echo");
    RawReaders readers(domain, {options.topic}, true);
    if (readers.all().empty()) {
        return ExitCode::Done; // it was interrupted
    }
    auto& reader = *readers.all().front();
    Echo echo(options, domain, reader);
    const auto begin = std::chrono::steady_clock::now();
    while (!echo.isDone() && !isInterrupted() && !isOutputClosed()) {
        readers.wait();
        reader.take([&](const Received& received) { echo.add(received); });
    }
    echo.summarise(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    return ExitCode::Done;
}

} // namespace ovra::plex::tool
