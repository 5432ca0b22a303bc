// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <plex/Export.hpp>
#include <plex/ps/internal/CallbackThread.hpp>
#include <plex/ps/internal/DispatchThread.hpp>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace ovra::plex::ps::internal
{

/// A registration of a function that is called back.
struct CallRecord {
    std::atomic<bool> ended = false; ///< no further call begins
};

/// The right to run a subscriber's asynchronous callbacks and notifiers, which one thread at a time has.
///
/// Whoever brings data takes the turn, or asks the thread that has it for another pass. A turn is served
/// - on a thread that publishes: when its outermost publication has written, with no lock held;
/// - inside a callback: when the outermost turn of the thread is over;
/// - on a thread of DDS: at once, with locks of DDS held, or on the participant's dispatch thread.
/// Nothing inside a callback ever waits for a turn or for another callback.
class PLEX_EXPORT CallbackTurn : public std::enable_shared_from_this<CallbackTurn>
{
public:
    CallbackTurn(const CallbackTurn&) = delete;
    CallbackTurn& operator=(const CallbackTurn&) = delete;
    virtual ~CallbackTurn();

    /// To be called by DDS, on any thread.
    /// @throws what a callback throws, where it runs in here.
    void dataArrived();

protected:
    CallbackTurn() = default;

    /// Calls back for what has arrived. Called by the thread that has the turn, until nothing new has come.
    virtual void callBack() = 0;

    /// Gives up what callBack() needs. Called once, when the turn has ended and no thread has it, perhaps by
    /// the last one that had it. May destroy this object.
    virtual void release() = 0;

    /// Lets what arrives from now on be called back for: by those that bring it, or by the thread given.
    void startServing(std::shared_ptr<DispatchThread> thread);

    /// Lets what arrives from now on wait for direct reads. @returns the thread that has served, if any.
    std::shared_ptr<DispatchThread> stopServing();

    /// Lets no further pass begin.
    void end();

    bool isEnded() const { return (state_.load(std::memory_order_relaxed) & ended) != 0; }

    /// Marks a call as running, for the thread that has the turn. @returns false where its record has ended:
    /// it must not be made then, but endCall() follows all the same.
    bool beginCall(const CallRecord& record)
    {
        running_.store(&record, std::memory_order_seq_cst);
        wakeAwaiting(); // in case that endCall() has looked too early
        return !record.ended.load(std::memory_order_seq_cst);
    }

    void endCall()
    {
        running_.store(nullptr, std::memory_order_release);
        wakeAwaiting();
    }

    /// A sample being taken, by the thread that has the turn, for those subscriptions that are looked up in
    /// its life.
    class Take
    {
    public:
        explicit Take(CallbackTurn& turn) : turn_(turn)
        {
            turn_.running_.store(&turn_.take_, std::memory_order_seq_cst);
            turn_.wakeAwaiting(); // as in beginCall()
        }

        Take(const Take&) = delete;
        Take& operator=(const Take&) = delete;

        ~Take() { turn_.endCall(); }

    private:
        CallbackTurn& turn_;
    };

    /// Outside callbacks, waits for a sample that is perhaps being taken for those who were looked up before
    /// the subscriptions have changed. Nobody would be told of it where they have all ended, and those that
    /// were made meanwhile would miss it.
    void awaitTake();

    /// Ends a record: no call of it begins any more. Outside callbacks, waits for one that runs.
    /// @returns whether none runs, so that its function may be destroyed.
    bool endRecord(CallRecord& record);

    /// Outside callbacks, waits until no call runs.
    void awaitCalls();

private:
    friend class DispatchThread;
    friend class TakenTurns;

    enum class Service : std::uint8_t { None, AtOnce, OnThread };

    static constexpr std::uint32_t taken = 1;   ///< a thread has the turn
    static constexpr std::uint32_t more = 2;    ///< it is to make another pass
    static constexpr std::uint32_t ended = 4;   ///< there are no further passes
    static constexpr std::uint32_t awaited = 8; ///< a thread waits for a change of state_ or running_
    static constexpr std::uint32_t onePass = 16;

    bool takeOrAskForMore();
    void serve();
    void serveOnDispatchThread();
    bool finishPass();
    void handOver();

    void wakeAwaiting()
    {
        if ((state_.load(std::memory_order_relaxed) & awaited) != 0) {
            wakeAll();
        }
    }

    void wakeAll();
    template <class Over>
    void waitUntil(Over over);

    std::uint32_t passes() const { return state_.load(std::memory_order_acquire) / onePass; }

    void awaitPassBehind(std::uint32_t pass);

    std::atomic<std::uint32_t> state_ = 0; ///< the bits above, and the number of passes times onePass
    std::atomic<Service> service_ = Service::None;
    std::atomic<const CallRecord*> running_ = nullptr;
    const CallRecord take_;             ///< stands in running_ for a sample that is being taken
    CallbackTurn* nextTaken_ = nullptr; ///< belongs to the thread that has the turn
    std::mutex threadMutex_;            ///< guards the next
    std::shared_ptr<DispatchThread> thread_;
};

/// A publication: what it brings to subscribers of this process is called back for by callBack().
class PLEX_EXPORT PublishScope
{
public:
    PublishScope() : thread_(CallbackThread::current()) { ++thread_.publishing; }

    PublishScope(const PublishScope&) = delete;
    PublishScope& operator=(const PublishScope&) = delete;

    /// After a failure, serves what has arrived nevertheless; exceptions of callbacks are logged.
    ~PublishScope()
    {
        if (open_) {
            serveAfterFailure();
        }
    }

    /// Ends the publication and, where it is the thread's outermost, calls back for what it brought. Nothing
    /// of the caller may be needed afterwards: a callback may have destroyed it.
    /// @throws what callbacks throw; where several do, the first, and the others are logged.
    void callBack()
    {
        open_ = false;
        if (--thread_.publishing == 0 && thread_.dispatching == 0 && thread_.hasTurns) {
            serve();
        }
    }

private:
    static void serve();
    void serveAfterFailure() noexcept;

    CallbackThread& thread_;
    bool open_ = true;
};

} // namespace ovra::plex::ps::internal
