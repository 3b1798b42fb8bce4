#define ASIO_STANDALONE
#define ASIO_NO_DEPRECATED
// What is posted takes a mutex anyway; the thread sanitizer doesn't understand bare fences.
#define ASIO_DISABLE_FENCED_BLOCK

#include "adapters/asio/asio_dispatch.h"

#include <algorithm>
#include <array>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace tavrolin::adapters::asio {

using platform::Block;
using RealClock = std::chrono::steady_clock;

namespace {

constexpr std::size_t kMaxThreads = 4;
constexpr std::size_t kPriorities = 4;
constexpr double kLongestDelay = 1e9;  // seconds: 31 years, so that no moment overflows
constexpr auto kSilence = std::chrono::seconds(1);
// As long as a phone would wait for an extension in all: what drips for longer holds no clock.
constexpr auto kLongestHold = std::chrono::seconds(30);

RealClock::duration duration(double seconds) {
    return std::chrono::duration_cast<RealClock::duration>(std::chrono::duration<double>(seconds));
}

double secondsOf(RealClock::duration time) {
    return std::chrono::duration<double>(time).count();
}

// What ends a run of the main queue, besides being told to.
enum class RunEnd { never, idle, quiet };

// An exception that leaves a block ends the process, on every queue alike.
void run(const Block& block) noexcept {
    block();
}

}  // namespace

// The blocks wait in queues of our own, where they can be counted and ordered; what is posted to
// the contexts only says "one more". A context without timers opens no descriptor, which is why the
// pool has one of its own and the main one makes its timer on first use.
struct AsioDispatch::State {
    explicit State(Clock c) : clock(c), jumpingNow(c.seconds()) {}

    const Clock clock;
    const RealClock::time_point origin = RealClock::now();

    mutable std::mutex mutex;  // guards everything below but the contexts, which guard themselves
    double jumpingNow;
    std::deque<Block> main;
    std::array<std::deque<Block>, kPriorities> global;
    std::multimap<double, Block> timers;  // by moment; equal moments keep the order of insertion
    std::multimap<double, Block> deadlines;
    std::set<const OpenHold*> holds;
    std::size_t pending = 0;
    std::size_t unfinished = 0;      // blocks that are queued or running
    std::size_t unfinishedPool = 0;  // those of the global queues
    bool isRunning = false;
    RunEnd runEnd = RunEnd::never;
    double horizon = 0;     // of a run until it is quiet: seconds; 0: timers wait
    double lastMoment = 0;  // and beyond this one they wait as well
    bool stopRequested = false;
    std::vector<std::thread> threads;
    std::atomic<std::uint64_t> activity{0};

    ::asio::io_context mainContext{1};
    ::asio::io_context pool;
    ::asio::executor_work_guard<::asio::io_context::executor_type> poolWork{pool.get_executor()};
    std::optional<::asio::steady_timer> alarm;
    RealClock::time_point alarmAt = RealClock::time_point::max();

    void runMain(RunEnd end);
    void pushMain(Block block);
    void runOneMain();
    void runOneGlobal();
    void finished(Block& block, bool isGlobal);

    double timerNow() const {
        return clock.isJumping() ? jumpingNow : secondsOf(RealClock::now() - origin);
    }
    void settle();
    void settleReal();
    void settleJumping();
    bool isQuiet() const;
    bool mayNeverEnd() const { return !holds.empty() || pending > 0; }
    std::optional<double> nextMoment() const;
    void queueTimersUntil(double moment);
    void wakeAt(RealClock::time_point moment);
    RealClock::time_point silentFrom() const;
};

class AsioDispatch::OpenPending : public Pending {
public:
    explicit OpenPending(std::shared_ptr<State> state) : state_(std::move(state)) {
        const std::lock_guard lock(state_->mutex);
        ++state_->pending;
    }
    ~OpenPending() override {
        const std::lock_guard lock(state_->mutex);
        --state_->pending;
        state_->settle();
    }

private:
    std::shared_ptr<State> state_;
};

class AsioDispatch::OpenHold : public Hold {
public:
    explicit OpenHold(std::shared_ptr<State> state) : state_(std::move(state)) {
        progress();
        const std::lock_guard lock(state_->mutex);
        state_->holds.insert(this);
    }
    ~OpenHold() override {
        const std::lock_guard lock(state_->mutex);
        state_->holds.erase(this);
        state_->settle();
    }
    // Called for every piece of a transfer: no lock.
    void progress() override {
        lastProgress_.store(RealClock::now().time_since_epoch(), std::memory_order_relaxed);
        state_->activity.fetch_add(1, std::memory_order_relaxed);
    }
    RealClock::time_point silentFrom() const {
        const RealClock::time_point last(lastProgress_.load(std::memory_order_relaxed));
        return std::min(last + kSilence, opened_ + kLongestHold);
    }

private:
    std::shared_ptr<State> state_;
    const RealClock::time_point opened_ = RealClock::now();
    std::atomic<RealClock::duration> lastProgress_{};
};

// --- Blocks -------------------------------------------------------------------------------------

void AsioDispatch::State::pushMain(Block block) {
    main.push_back(std::move(block));
    ++unfinished;
    ::asio::post(mainContext, [this] { runOneMain(); });
}

void AsioDispatch::State::runOneMain() {
    Block block;
    {
        const std::lock_guard lock(mutex);
        block = std::move(main.front());
        main.pop_front();
    }
    run(block);
    finished(block, false);
}

void AsioDispatch::State::runOneGlobal() {
    Block block;
    {
        const std::lock_guard lock(mutex);
        const auto queue = std::find_if(global.begin(), global.end(),
                                        [](const auto& blocks) { return !blocks.empty(); });
        block = std::move(queue->front());
        queue->pop_front();
    }
    run(block);
    finished(block, true);
}

void AsioDispatch::State::finished(Block& block, bool isGlobal) {
    activity.fetch_add(1, std::memory_order_relaxed);
    block = nullptr;  // may end a hold, so it comes before the lock and before the count
    const std::lock_guard lock(mutex);
    --unfinished;
    if (isGlobal) --unfinishedPool;
    settle();
}

// --- Time ---------------------------------------------------------------------------------------

// Called under the lock after every change that could let time or the run go on.
void AsioDispatch::State::settle() {
    if (!isRunning) return;
    // What ends here leaves the clock where it is.
    if (stopRequested || (runEnd == RunEnd::quiet && isQuiet())) return mainContext.stop();
    if (clock.isJumping()) {
        settleJumping();
    } else {
        settleReal();
    }
    const bool isIdle = unfinished == 0 && timers.empty() && !mayNeverEnd();
    if (isIdle && runEnd == RunEnd::idle) mainContext.stop();
}

bool AsioDispatch::State::isQuiet() const {
    if (unfinished > 0) return false;
    if (!(horizon > 0) || timers.empty()) return true;
    return timers.begin()->first > std::min(timerNow() + horizon, lastMoment);
}

void AsioDispatch::State::settleReal() {
    queueTimersUntil(timerNow());
    if (const auto moment = nextMoment()) wakeAt(origin + duration(*moment));
}

void AsioDispatch::State::settleJumping() {
    if (unfinished > 0 || (timers.empty() && !mayNeverEnd())) return;
    const auto moment = nextMoment();
    if (!moment) return;
    const RealClock::time_point silent = silentFrom();
    if (!holds.empty() && RealClock::now() < silent) return wakeAt(silent);
    jumpingNow = *moment;
    queueTimersUntil(jumpingNow);
}

std::optional<double> AsioDispatch::State::nextMoment() const {
    std::optional<double> moment;
    if (!timers.empty()) moment = timers.begin()->first;
    if (!deadlines.empty() && (!moment || deadlines.begin()->first < *moment)) {
        moment = deadlines.begin()->first;
    }
    return moment;
}

// At the same moment a deadline comes after the timers: work that is just in time is in time.
void AsioDispatch::State::queueTimersUntil(double moment) {
    for (auto* waiting : {&timers, &deadlines}) {
        const auto end = waiting->upper_bound(moment);
        for (auto it = waiting->begin(); it != end; ++it)
            pushMain(std::move(it->second));
        waiting->erase(waiting->begin(), end);
    }
}

// Settles again at that moment, or at an earlier one that was asked for before.
void AsioDispatch::State::wakeAt(RealClock::time_point moment) {
    if (alarmAt <= moment) return;
    alarmAt = moment;
    if (!alarm) alarm.emplace(mainContext);
    alarm->expires_at(moment);
    alarm->async_wait([this](const std::error_code& error) {
        if (error) return;  // replaced by an earlier one
        const std::lock_guard lock(mutex);
        if (RealClock::now() >= alarmAt) alarmAt = RealClock::time_point::max();
        settle();
    });
}

RealClock::time_point AsioDispatch::State::silentFrom() const {
    RealClock::time_point latest = RealClock::time_point::min();
    for (const OpenHold* hold : holds)
        latest = std::max(latest, hold->silentFrom());
    return latest;
}

// --- Running ------------------------------------------------------------------------------------

void AsioDispatch::State::runMain(RunEnd end) {
    const auto work = ::asio::make_work_guard(mainContext);
    {
        const std::lock_guard lock(mutex);
        mainContext.restart();
        isRunning = true;
        runEnd = end;
        settle();
    }
    mainContext.run();
    const std::lock_guard lock(mutex);
    isRunning = false;
    stopRequested = false;
}

AsioDispatch::AsioDispatch(Clock clock) : state_(std::make_shared<State>(clock)) {}

// Blocks that never ran may own holds and objects that call back: they are dropped without the
// lock.
AsioDispatch::~AsioDispatch() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(state_->mutex);
        threads.swap(state_->threads);
    }
    state_->pool.stop();
    for (std::thread& thread : threads)
        thread.join();

    std::deque<Block> main;
    std::array<std::deque<Block>, kPriorities> global;
    std::multimap<double, Block> timers;
    std::multimap<double, Block> deadlines;
    const std::lock_guard lock(state_->mutex);
    main.swap(state_->main);
    global.swap(state_->global);
    timers.swap(state_->timers);
    deadlines.swap(state_->deadlines);
}

void AsioDispatch::runMain() {
    state_->runMain(RunEnd::never);
}

void AsioDispatch::runMainUntilIdle() {
    state_->runMain(RunEnd::idle);
}

void AsioDispatch::runMainUntilQuiet() {
    runMainUntilQuiet(0, 0);
}

void AsioDispatch::runMainUntilQuiet(double horizon, double atMost) {
    {
        const std::lock_guard lock(state_->mutex);
        state_->horizon = horizon;
        state_->lastMoment = state_->timerNow() + atMost;
    }
    state_->runMain(RunEnd::quiet);
}

void AsioDispatch::stop() {
    const std::lock_guard lock(state_->mutex);
    state_->stopRequested = true;
    state_->settle();
}

foundation::Date AsioDispatch::now() const {
    if (!state_->clock.isJumping()) {
        const auto real = std::chrono::system_clock::now().time_since_epoch();
        return {std::chrono::duration<double>(real).count() + state_->clock.seconds()};
    }
    const std::lock_guard lock(state_->mutex);
    return {state_->jumpingNow};
}

void AsioDispatch::asyncMain(Block block) {
    const std::lock_guard lock(state_->mutex);
    state_->pushMain(std::move(block));
}

void AsioDispatch::asyncGlobal(platform::QueuePriority priority, Block block) {
    State& state = *state_;
    const std::lock_guard lock(state.mutex);
    state.global[static_cast<std::size_t>(priority)].push_back(std::move(block));
    ++state.unfinished;
    ++state.unfinishedPool;
    ::asio::post(state.pool, [&state] { state.runOneGlobal(); });
    if (state.unfinishedPool > state.threads.size() && state.threads.size() < kMaxThreads) {
        state.threads.emplace_back([&state] { state.pool.run(); });
    }
}

void AsioDispatch::afterMain(double seconds, Block block) {
    const std::lock_guard lock(state_->mutex);
    if (!(seconds > 0)) return state_->pushMain(std::move(block));
    const double moment = state_->timerNow() + std::min(seconds, kLongestDelay);
    state_->timers.emplace(moment, std::move(block));
    state_->settle();
}

void AsioDispatch::deadlineMain(double seconds, Block block) {
    const std::lock_guard lock(state_->mutex);
    const double moment = state_->timerNow() + std::clamp(seconds, 0.0, kLongestDelay);
    state_->deadlines.emplace(moment, std::move(block));
    state_->settle();
}

std::unique_ptr<platform::Dispatch::Hold> AsioDispatch::hold() {
    return std::make_unique<OpenHold>(state_);
}

std::unique_ptr<AsioDispatch::Pending> AsioDispatch::pending() {
    return std::make_unique<OpenPending>(state_);
}

std::uint64_t AsioDispatch::activity() const {
    return state_->activity.load(std::memory_order_relaxed);
}

std::int64_t AsioDispatch::secondsFromGMT(foundation::Date date) const {
    if (!(std::abs(date.secondsSince1970) < 1e15)) return 0;  // no moment of any calendar
    const auto moment = static_cast<std::time_t>(date.secondsSince1970);
    std::tm local{};
    return localtime_r(&moment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

}  // namespace tavrolin::adapters::asio
