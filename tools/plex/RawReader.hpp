// SPDX-License-Identifier: Apache-2.0
// Readers of topics of any type, which disturb nobody: best-effort, so that no writer ever waits for them.
#pragma once

#include "Domain.hpp"
#include "RawType.hpp"

#include <fastdds/dds/core/condition/WaitSet.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/Topic.hpp>
#include <fastdds/dds/topic/TypeSupport.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

/// What a reader has received.
struct Received {
    const RawSample& sample; ///< of the reader: valid during the call
    bool isValue;            ///< else only its instance has changed
    bool isDisposed;         ///< where it is no value: the instance was disposed, else its writers have gone
    KeyHash instance;        ///< where it is no value
    fastdds::Guid writer;
    std::uint64_t sequence;     ///< the writer's number of it, from 1 on
    std::int64_t sourceTime;    ///< nanoseconds since 1970; 0: the writer has not said it
    std::int64_t receptionTime; ///< likewise
};

/// A reader of one topic. Belongs to one thread, and goes before its domain. There is one of a topic at most.
class RawReader
{
public:
    /// For the writers that are known of a topic, or where there is none, for its readers' type.
    /// @throws Failure where DDS refuses, and where there is no such topic any more.
    RawReader(Domain& domain, const std::string& topic, bool keepsBytes);
    RawReader(const RawReader&) = delete;
    RawReader& operator=(const RawReader&) = delete;
    ~RawReader();

    const std::string& topic() const { return topic_; }

    /// The type's name by which the reader goes, and whether it has a key.
    const std::string& type() const { return type_; }

    bool keyed() const { return keyed_; }

    /// Whether payloads are kept from now on, by all readers of the type.
    void keepBytes(bool keepsBytes);

    dds::StatusCondition& condition() { return reader_->get_statuscondition(); }

    /// Takes all that is there.
    void take(const std::function<void(const Received&)>& handle);

private:
    void create(const std::vector<fastdds::AnnouncedEndpoint>& writers, bool keepsBytes);

    dds::DomainParticipant& participant_;
    const std::string topic_;
    std::string type_;
    bool keyed_ = false;
    dds::Topic* ddsTopic_ = nullptr; ///< this and what follows are deleted by the destructor
    dds::Subscriber* subscriber_ = nullptr;
    dds::DataReader* reader_ = nullptr;
};

/// Readers of several topics.
class RawReaders
{
public:
    /// Waits for each of the topics.
    /// @throws Failure where one of them is not there, and as RawReader.
    RawReaders(Domain& domain, const std::vector<std::string>& topics, bool keepsBytes);

    /// Adds a reader of a topic, of which something is known. @throws Failure as RawReader.
    RawReader& add(Domain& domain, const std::string& topic, bool keepsBytes);

    /// Waits until there is something to take, or nothing for longestWait.
    void wait();

    std::vector<std::unique_ptr<RawReader>>& all() { return readers_; }

private:
    std::vector<std::unique_ptr<RawReader>> readers_;
    dds::WaitSet waitSet_;
};

} // namespace ovra::plex::tool
