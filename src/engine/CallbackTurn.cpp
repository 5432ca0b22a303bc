// SPDX-License-Identifier: Apache-2.0
#include <plex/ps/internal/CallbackTurn.hpp>
#include <plex/ps/internal/Failure.hpp>

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

namespace ovra::plex::ps::internal
{

namespace
{

/// The first of several exceptions, while what must go on goes on.
class FirstException
{
public:
    template <class Work>
    void during(Work work)
    {
        try {
            work();
        } catch (...) {
            if (first_) {
                recordErrMsg(log4cplus::Logger::getInstance("plexDdsSubscriptionManager"),
                             "Another callback has thrown as well: " + currentExceptionText());
            } else {
                first_ = std::current_exception();
            }
        }
    }

    void rethrow() const
    {
        if (first_) {
            std::rethrow_exception(first_);
        }
    }

private:
    std::exception_ptr first_;
};

} // namespace

/// The turns that matter to the calling thread.
class TakenTurns
{
public:
    static TakenTurns& ofThread()
    {
        static thread_local TakenTurns turns;
        return turns;
    }

    void add(CallbackTurn& turn)
    {
        turn.nextTaken_ = nullptr;
        (last_ == nullptr ? first_ : last_->nextTaken_) = &turn;
        last_ = &turn;
        CallbackThread::current().hasTurns = true;
    }

    /// Data has come inside a callback.
    void addLater(std::shared_ptr<CallbackTurn> turn)
    {
        if (std::ranges::find(later_, turn) == later_.end()) {
            later_.push_back(std::move(turn));
        }
    }

    /// Another thread is about to serve what the calling one has brought.
    void addOther(std::shared_ptr<CallbackTurn> turn)
    {
        const auto pass = turn->passes();
        others_.push_back({std::move(turn), pass});
        CallbackThread::current().hasTurns = true;
    }

    /// Serves the turns, and what their callbacks have brought.
    void serve(FirstException& exceptions)
    {
        CallbackThread& thread = CallbackThread::current();
        thread.hasTurns = !others_.empty();
        const CallbackScope scope;
        ++thread.dispatching;
        while (CallbackTurn* const turn = takeFirst()) {
            exceptions.during([&] { turn->serve(); });
        }
        --thread.dispatching;
    }

    /// Waits until others have served what the calling thread has brought.
    void awaitOthers()
    {
        CallbackThread::current().hasTurns = false;
        for (const auto& [turn, pass] : std::exchange(others_, {})) {
            turn->awaitPassBehind(pass);
        }
    }

private:
    struct Other {
        std::shared_ptr<CallbackTurn> turn;
        std::uint32_t pass; ///< the one that was under way
    };

    CallbackTurn* takeFirst()
    {
        while (first_ == nullptr && !later_.empty()) {
            const auto turns = std::exchange(later_, {});
            for (const auto& turn : turns) {
                if (turn->takeOrAskForMore()) {
                    add(*turn);
                }
            }
            CallbackThread::current().hasTurns = !others_.empty();
        }
        CallbackTurn* const turn = first_;
        if (turn != nullptr) {
            first_ = turn->nextTaken_;
            last_ = first_ == nullptr ? nullptr : last_;
        }
        return turn;
    }

    CallbackTurn* first_ = nullptr; ///< those that the thread has taken and is to serve, a list
    CallbackTurn* last_ = nullptr;
    std::vector<std::shared_ptr<CallbackTurn>> later_;
    std::vector<Other> others_;
};

namespace
{

/// Serves where DDS holds locks.
void serveOnDdsThread(TakenTurns& turns)
{
    CallbackThread& thread = CallbackThread::current();
    const bool before = std::exchange(thread.onDdsThread, true);
    FirstException exceptions;
    turns.serve(exceptions);
    thread.onDdsThread = before;
    exceptions.rethrow();
}

} // namespace

CallbackTurn::~CallbackTurn() = default;

void CallbackTurn::startServing(std::shared_ptr<DispatchThread> thread)
{
    const std::lock_guard lock(threadMutex_);
    service_.store(thread ? Service::OnThread : Service::AtOnce, std::memory_order_relaxed);
    thread_ = std::move(thread);
}

std::shared_ptr<DispatchThread> CallbackTurn::stopServing()
{
    const std::lock_guard lock(threadMutex_);
    service_.store(Service::None, std::memory_order_relaxed);
    return std::exchange(thread_, nullptr);
}

void CallbackTurn::dataArrived()
{
    const auto service = service_.load(std::memory_order_relaxed);
    if (service == Service::None) {
        return;
    }
    if (service == Service::OnThread) {
        handOver();
        return;
    }
    const CallbackThread& thread = CallbackThread::current();
    auto& turns = TakenTurns::ofThread();
    if (thread.dispatching > 0) {
        turns.addLater(shared_from_this());
    } else if (!takeOrAskForMore()) {
        if (thread.publishing > 0 && !thread.isInCallback()) {
            turns.addOther(shared_from_this());
        }
    } else {
        turns.add(*this);
        if (thread.publishing == 0) {
            serveOnDdsThread(turns);
        }
    }
}

void CallbackTurn::handOver()
{
    const std::lock_guard lock(threadMutex_);
    if (thread_ && takeOrAskForMore()) {
        thread_->post(*this);
    }
}

void CallbackTurn::serveOnDispatchThread()
{
    FirstException exceptions;
    TakenTurns::ofThread().add(*this);
    TakenTurns::ofThread().serve(exceptions);
    exceptions.rethrow();
}

bool CallbackTurn::takeOrAskForMore()
{
    auto state = state_.load(std::memory_order_relaxed);
    for (;;) {
        const auto next = state | ((state & taken) == 0 ? taken : more);
        if ((state & ended) != 0 || next == state) {
            return false;
        }
        if (state_.compare_exchange_weak(state, next, std::memory_order_acq_rel, std::memory_order_relaxed)) {
            return (state & taken) == 0;
        }
    }
}

void CallbackTurn::serve()
{
    FirstException exceptions;
    do {
        if (!isEnded()) {
            exceptions.during([this] { callBack(); });
        }
    } while (!finishPass()); // which may have destroyed this object
    exceptions.rethrow();
}

/// @returns whether the turn is over.
bool CallbackTurn::finishPass()
{
    auto state = state_.load(std::memory_order_relaxed);
    for (;;) {
        const bool again = (state & (more | ended)) == more;
        const auto next = (state + onePass) & ~(more | awaited | (again ? 0U : taken));
        if (state_.compare_exchange_weak(state, next, std::memory_order_acq_rel, std::memory_order_relaxed)) {
            break;
        }
    }
    if ((state & awaited) != 0) {
        state_.notify_all();
    }
    if ((state & ended) != 0) {
        release();
    }
    return (state & (more | ended)) != more;
}

void CallbackTurn::end()
{
    if ((state_.fetch_or(ended, std::memory_order_acq_rel) & (taken | ended)) == 0) {
        release();
    }
}

bool CallbackTurn::endRecord(CallRecord& record)
{
    record.ended.store(true, std::memory_order_seq_cst);
    const auto isOver = [&] {
        return running_.load(std::memory_order_seq_cst) != &record;
    };
    if (!isOver() && CallbackThread::current().isInCallback()) {
        return false;
    }
    waitUntil(isOver);
    return true;
}

void CallbackTurn::awaitTake()
{
    if (!CallbackThread::current().isInCallback()) {
        waitUntil([&] { return running_.load(std::memory_order_seq_cst) != &take_; });
    }
}

void CallbackTurn::awaitCalls()
{
    const auto* const running = running_.load(std::memory_order_seq_cst);
    if (running != nullptr && !CallbackThread::current().isInCallback()) {
        waitUntil([&] { return running_.load(std::memory_order_seq_cst) != running; });
    }
}

template <class Over>
void CallbackTurn::waitUntil(Over over)
{
    while (!over()) {
        const auto state = state_.fetch_or(awaited, std::memory_order_seq_cst) | awaited;
        if (!over()) {
            state_.wait(state, std::memory_order_acquire);
        }
    }
}

void CallbackTurn::wakeAll()
{
    state_.fetch_and(~awaited, std::memory_order_acq_rel);
    state_.notify_all();
}

/// Waits for the pass behind the one given, which began before what the caller has brought came; or for there
/// being nothing to serve.
void CallbackTurn::awaitPassBehind(std::uint32_t pass)
{
    waitUntil([&] {
        const auto state = state_.load(std::memory_order_acquire);
        return (state & taken) == 0 || (state - pass * onePass) / onePass >= 2;
    });
}

void PublishScope::serve()
{
    auto& turns = TakenTurns::ofThread();
    FirstException exceptions;
    turns.serve(exceptions);
    turns.awaitOthers();
    exceptions.rethrow();
}

void PublishScope::serveAfterFailure() noexcept
{
    FirstException exceptions;
    exceptions.during([this] { callBack(); });
    exceptions.during([&] { exceptions.rethrow(); }); // a second one is logged
}

} // namespace ovra::plex::ps::internal
