// SPDX-License-Identifier: Apache-2.0
#include "RecordingFile.hpp"

#include <chrono>
#include <utility>

namespace ovra::plex::tool
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::size_t mostBytesWaiting = 128U << 20U; ///< bytes, while as many are written
constexpr std::size_t valueSize = sizeof(RecordedValue) + sizeof(std::size_t);
constexpr auto longestInMemory = std::chrono::milliseconds(500);

} // namespace

RecordingFile::RecordingFile(const std::filesystem::path& path, const mcap::WriterOptions& options)
    : writer_(path, options)
    , size_(writer_.size())
    , thread_([this] { run(); })
{
}

RecordingFile::~RecordingFile()
{
    end();
}

void RecordingFile::add(std::optional<mcap::Schema> schema, mcap::Channel channel)
{
    const std::lock_guard lock(mutex_);
    waiting_.channels.push_back({std::move(schema), std::move(channel)});
}

bool RecordingFile::add(const RecordedValue& value, std::span<const std::uint8_t> payload)
{
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex_);
        const auto taken = waiting_.payloads.size() + waiting_.values.size() * valueSize;
        if (taken + payload.size() + valueSize > mostBytesWaiting && !waiting_.values.empty()) {
            return false;
        }
        isFirst = waiting_.values.empty();
        waiting_.values.emplace_back(value, payload.size());
        waiting_.payloads.insert(waiting_.payloads.end(), payload.begin(), payload.end());
    }
    if (isFirst) {
        change_.notify_one();
    }
    return true;
}

void RecordingFile::close()
{
    end();
    if (error_) {
        std::rethrow_exception(error_);
    }
    writer_.close();
    size_ = writer_.size();
}

void RecordingFile::end()
{
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    change_.notify_one();
    thread_.join();
}

void RecordingFile::run()
{
    try {
        auto flushed = Clock::now();
        for (bool isLast = false; !isLast;) {
            Waiting taken;
            {
                std::unique_lock lock(mutex_);
                change_.wait_until(lock, flushed + longestInMemory,
                                   [this] { return isEnding_ || !waiting_.values.empty(); });
                isLast = isEnding_;
                taken = std::exchange(waiting_, {});
            }
            write(taken);
            if (Clock::now() - flushed >= longestInMemory) {
                writer_.flush();
                flushed = Clock::now();
            }
            size_ = writer_.size();
        }
    } catch (...) {
        error_ = std::current_exception();
        failed_ = true;
    }
}

void RecordingFile::write(const Waiting& waiting)
{
    for (const auto& added : waiting.channels) {
        addChannel(added);
    }
    std::span<const std::uint8_t> payloads = waiting.payloads;
    for (const auto& [value, size] : waiting.values) {
        writer_.write(
            {ids_.at(value.channel), value.sequence, value.logTime, value.publishTime, payloads.first(size)});
        payloads = payloads.subspan(size);
    }
}

void RecordingFile::addChannel(const NewChannel& added)
{
    auto channel = added.channel;
    if (added.schema) {
        const auto [known, isNew] = schemas_.try_emplace({added.schema->name, added.schema->data}, 0);
        if (isNew) {
            known->second = writer_.add(*added.schema);
        }
        channel.schema = known->second;
    }
    ids_.push_back(writer_.add(std::move(channel)));
}

} // namespace ovra::plex::tool
