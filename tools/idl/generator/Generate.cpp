// SPDX-License-Identifier: Apache-2.0
#include "Emitters.hpp"
#include "Hash.hpp"
#include "Names.hpp"
#include "Values.hpp"

#include <plex/idl/Generate.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <span>

namespace ovra::plex::idl
{

namespace
{

using Files = std::vector<GeneratedFile>;

void addTopic(Files& files, const TopicPlan& topic)
{
    const std::string dds = "dds/" + topic.folder + topic.name;
    files.push_back({"include/" + topic.header, valueInterfaceHeader(topic)});
    files.push_back({"src/" + topic.folder + topic.name + ".cpp", valueInterfaceSource(topic)});
    files.push_back({dds + ".hpp", wireTypeHeader(topic)});
    files.push_back({dds + ".cpp", wireTypeSource(topic)});
    files.push_back({dds + "Cdr.hpp", cdrHeader(topic)});
    files.push_back({dds + "Cdr.cpp", cdrSource(topic)});
    files.push_back({dds + "PubSubType.hpp", topicDataTypeHeader(topic)});
    files.push_back({dds + "PubSubType.cpp", topicDataTypeSource(topic)});
    files.push_back({dds + "Adapter.hpp", adapterHeader(topic)});
    files.push_back({dds + "Adapter.cpp", adapterSource(topic)});
    files.push_back({dds + "Factories.cpp", factoriesSource(topic)});
    files.push_back({dds + "Description.cpp", descriptionSource(topic)});
}

/// One header for the topics of each module.
void addFactoriesHeaders(Files& files, const std::vector<TopicPlan>& topics)
{
    std::map<std::string, std::vector<TopicPlan>> byFolder;
    for (const TopicPlan& topic : topics) {
        byFolder[topic.folder].push_back(topic);
    }
    for (const auto& [folder, those] : byFolder) {
        files.push_back({"dds/" + folder + "Factories.hpp", factoriesHeader(those)});
    }
}

/// A number that changes with the text of files.
std::uint64_t checksumOf(const Files& files)
{
    std::string all;
    for (const GeneratedFile& file : files) {
        all += file.path + file.text;
    }
    return hashOf(all);
}

/// @param checksum makes the file change with those that it includes: build systems know of this one only.
std::string including(const std::vector<std::string>& sources, std::uint64_t checksum)
{
    std::string text =
        "// SPDX-License-Identifier: Apache-2.0\n// What is compiled together; it is version " +
        std::to_string(checksum) + ".\n";
    for (const std::string& source : sources) {
        text += "#include \"" + source + "\"\n";
    }
    return text;
}

/// Files that include the others. What belongs to one topic stays together.
void addShards(Files& files, const std::vector<TopicPlan>& topics, unsigned count)
{
    const std::uint64_t checksum = checksumOf(files);
    std::vector<std::vector<std::string>> shards(std::max(count, 1U));
    std::vector<std::string> values;
    for (std::size_t i = 0; i < topics.size(); ++i) {
        const std::string stem = topics[i].folder + topics[i].name;
        for (const char* const part : {"", "Cdr", "PubSubType", "Adapter", "Factories", "Description"}) {
            shards[i % shards.size()].push_back(stem + part + ".cpp");
        }
        values.push_back(stem + ".cpp");
    }
    for (std::size_t i = 0; i < shards.size(); ++i) {
        files.push_back({"dds/shard" + std::to_string(i) + ".cpp", including(shards[i], checksum)});
    }
    files.push_back({"src/shard0.cpp", including(values, checksum)});
}

/// By whose names the binding is looked up: one a line.
std::string modulesText(const std::vector<TopicPlan>& topics)
{
    std::set<std::string> modules;
    for (const TopicPlan& topic : topics) {
        modules.insert(symbolOf(*topic.type->module));
    }
    std::string text;
    for (const std::string& module : modules) {
        text += module + "\n";
    }
    return text;
}

/// Those of a topic that have names, or symbols, of which there is another one already.
class Clashes
{
public:
    Clashes(const Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

    void add(const TopicPlan& topic, std::span<const GeneratedFile> files)
    {
        const auto taken = std::ranges::find_if(
            files, [this](const auto& file) { return !paths_.insert(file.path).second; });
        if (taken != files.end()) {
            refuse(topic, "two files would be called " + taken->path);
        } else if (!symbols_.insert(topic.symbol).second) {
            refuse(topic, "two topics would be exported as " + topic.symbol);
        }
    }

    /// A file of no topic.
    void add(const std::string& path) { paths_.insert(path); }

private:
    void refuse(const TopicPlan& topic, const std::string& message)
    {
        const Location& place = topic.type->location;
        diagnostics_.add({Severity::Error,
                          model_.files.at(place.file).path,
                          place.line,
                          place.column,
                          message,
                          "rename this topic, or the other one that it is made of",
                          {}});
    }

    const Model& model_;
    Diagnostics& diagnostics_;
    std::set<std::string> paths_;
    std::set<std::string> symbols_;
};

/// @param files those of the topics, each with as many, then those of no topic.
void refuseClashes(const Model& model, const Plan& plan, std::span<const GeneratedFile> files,
                   std::size_t ofTopics, Diagnostics& diagnostics)
{
    Clashes clashes(model, diagnostics);
    for (const GeneratedFile& file : files.subspan(ofTopics)) {
        clashes.add(file.path);
    }
    for (std::size_t i = 0; i < plan.topics.size(); ++i) {
        const std::size_t count = ofTopics / plan.topics.size();
        clashes.add(plan.topics[i], files.subspan(i * count, count));
    }
}

} // namespace

Generation generate(const Model& model, const GenerateOptions& options)
{
    Generation generation;
    const Plan plan = planOf(model, options, generation.diagnostics);
    if (generation.diagnostics.errors() > 0) {
        return generation;
    }
    for (const TopicPlan& topic : plan.topics) {
        addTopic(generation.files, topic);
    }
    const std::size_t ofTopics = generation.files.size();
    addFactoriesHeaders(generation.files, plan.topics);
    for (const std::string& module : modulesOf(plan)) {
        generation.files.push_back({"include/" + module + "/Values.hpp", valuesText(plan, module)});
    }
    if (!std::ranges::all_of(plan.topics, isSimple)) {
        generation.files.push_back({"dds/ValueFields.hpp", fieldsText(plan)});
    }
    addShards(generation.files, plan.topics, options.shards);
    generation.files.push_back({"dds/modules.txt", modulesText(plan.topics)});
    refuseClashes(model, plan, generation.files, ofTopics, generation.diagnostics);
    if (generation.diagnostics.errors() > 0) {
        generation.files.clear();
    }
    return generation;
}

} // namespace ovra::plex::idl
