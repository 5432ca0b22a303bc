// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/fastdds/Generation.hpp>

#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>

/// Makes operations of DDS misbehave underneath the libraries as they are shipped.
///
/// The test program defines the operations itself (Interposers.cpp lists them). A program's symbols go before
/// those of shared libraries, so the libraries call these, and they call the real ones unless told otherwise.
/// An operation goes by its class and name, "DataWriter::write".
///
/// Threads: told on one thread, noticed on all.
namespace plex::test
{

using ovra::plex::fastdds::ReturnCode;

namespace fastdds = ovra::plex::fastdds;

/// Something that is to happen around the calls of an operation while it lives. A test fails whose
/// disturbance never took place, but for a mere count.
class Disturbance
{
public:
    Disturbance(const Disturbance&) = delete;
    Disturbance& operator=(const Disturbance&) = delete;
    virtual ~Disturbance();

    /// Before the real operation. @returns whether this call fails.
    virtual bool fails() { return false; }

    /// The code that a failing call returns, where it returns one.
    virtual ReturnCode code() const { return fastdds::RETCODE_OK; }

    /// Whether a failing call does its work all the same.
    virtual bool isCarriedOut() const { return true; }

    /// After the real operation, where that gave samples.
    virtual void change(eprosima::fastdds::dds::SampleInfo& /*info*/) {}

    const std::string& operation() const { return operation_; }

    /// Counts a call that is about to be made.
    void count() { ++calls_; }

protected:
    enum class Calls { Expected, Optional };

    explicit Disturbance(std::string operation, Calls expectation = Calls::Expected);

    int calls() const { return calls_; }

private:
    const std::string operation_; ///< its class and name
    const Calls expectation_;
    std::atomic<int> calls_ = 0;
};

/// An operation fails: it does nothing and returns the code, or null, or the nil handle.
class Fault final : public Disturbance
{
public:
    enum class Work { Undone, Done };

    struct Details {
        int fromCall = 1;         ///< the first call that fails; all later ones do
        Work work = Work::Undone; ///< Done: the operation works all the same, and only says that it failed
    };

    explicit Fault(std::string operation, ReturnCode code = fastdds::RETCODE_ERROR)
        : Fault(std::move(operation), code, Details())
    {
    }

    Fault(std::string operation, ReturnCode code, Details details)
        : Disturbance(std::move(operation))
        , code_(code)
        , details_(details)
    {
    }

    bool fails() override { return calls() >= details_.fromCall; }

    ReturnCode code() const override { return code_; }

    bool isCarriedOut() const override { return details_.work == Work::Done; }

private:
    const ReturnCode code_;
    const Details details_;
};

/// Nothing happens, but the calls of an operation are added up.
class CallCount final : public Disturbance
{
public:
    CallCount(std::string operation, int& total)
        : Disturbance(std::move(operation), Calls::Optional)
        , total_(total)
    {
    }

    bool fails() override
    {
        ++total_;
        return false;
    }

private:
    int& total_;
};

/// Something else happens just before an operation, for the first time that it is called.
class Meanwhile final : public Disturbance
{
public:
    Meanwhile(std::string operation, std::function<void()> action)
        : Disturbance(std::move(operation))
        , action_(std::move(action))
    {
    }

    bool fails() override
    {
        if (calls() == 1) {
            action_();
        }
        return false;
    }

private:
    const std::function<void()> action_;
};

/// An operation that gives samples says something else about them.
class DoctoredSamples final : public Disturbance
{
public:
    using Change = std::function<void(eprosima::fastdds::dds::SampleInfo&)>;

    DoctoredSamples(std::string operation, Change change)
        : Disturbance(std::move(operation))
        , change_(std::move(change))
    {
    }

    void change(eprosima::fastdds::dds::SampleInfo& info) override { change_(info); }

private:
    const Change change_;
};

/// No mutex inside an object can be locked while it lives. One at a time.
class Unlockable
{
public:
    template <class Object>
    explicit Unlockable(const Object& object) : Unlockable(&object, sizeof(Object))
    {
    }

    Unlockable(const Unlockable&) = delete;
    Unlockable& operator=(const Unlockable&) = delete;
    ~Unlockable();

    /// Whether a mutex is inside the object.
    static bool contains(const void* mutex);

private:
    Unlockable(const void* object, std::size_t size);
};

/// The disturbance of an operation's call that is about to be made, or null. The latest counts.
Disturbance* disturbanceOf(const std::string& operation);

} // namespace plex::test
