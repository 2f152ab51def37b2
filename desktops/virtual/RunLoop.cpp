#include "desktops/virtual/RunLoop.h"

#include "desktops/virtual/Contract.h"

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

// Time is kept in whole nanoseconds, so that six steps of 0.1 s make exactly 0.6 s.
constexpr double nanosecondsPerSecond = 1e9;
// Not zero, so that a time taken for a duration shows.
constexpr std::int64_t startTime = 100'000'000'000;
constexpr double startWallClock = 1'767'225'600; // 2026-01-01 00:00 UTC
// Sums of seconds may differ in their last digit; what is due within half a step is due.
constexpr double halfStep = 0.5 / nanosecondsPerSecond;
// That much work at one moment is work that asks for itself.
constexpr int endlessLoop = 100'000;

std::int64_t nanoseconds(double seconds) {
    return std::llround(seconds * nanosecondsPerSecond);
}

double seconds(std::int64_t nanosecondCount) {
    return static_cast<double>(nanosecondCount) / nanosecondsPerSecond;
}

} // namespace

VirtualRunLoop::VirtualRunLoop() {
    queue_->now = startTime;
    wallClockOffset_ = startWallClock - seconds(startTime);
}

VirtualRunLoop::~VirtualRunLoop() {
    const auto left = pendingTimers();
    if (!left.empty()) {
        contractViolation(std::to_string(left.size()) + " timer(s) left at the end, the first due at " +
                          std::to_string(left.front().due));
    }
}

double VirtualRunLoop::now() const {
    const std::lock_guard lock(queue_->mutex);
    return seconds(queue_->now);
}

double VirtualRunLoop::wallClock() const {
    return now() + wallClockOffset_;
}

void VirtualRunLoop::setWallClock(double secondsSince1970) {
    wallClockOffset_ = secondsSince1970 - now();
}

VirtualRunLoop::Order VirtualRunLoop::Queue::add(std::shared_ptr<Work> item, std::int64_t due) {
    const std::lock_guard lock(mutex);
    const Order order{std::max(due, now), next++};
    if (item->kind == Kind::Timer) {
        timers[item.get()] = order;
    }
    work.emplace(order, std::move(item));
    return order;
}

void VirtualRunLoop::Queue::cancel(const Work* timer) {
    std::shared_ptr<Work> dropped; // destroyed without the lock: what it captured may hold handles
    const std::lock_guard lock(mutex);
    const auto found = timers.find(timer);
    if (found == timers.end()) {
        return;
    }
    const auto waiting = work.find(found->second);
    if (waiting != work.end() && waiting->second.get() == timer) {
        dropped = std::move(waiting->second);
        work.erase(waiting);
    }
    timers.erase(found);
}

void VirtualRunLoop::post(std::function<void()> work) {
    auto posted = std::make_shared<Work>();
    posted->work = std::move(work);
    queue_->add(std::move(posted), 0);
}

void VirtualRunLoop::background(QualityOfService /*quality*/, std::function<void()> work) {
    requireMainThread("RunLoop::background");
    auto item = std::make_shared<Work>();
    item->kind = Kind::Background;
    item->work = std::move(work);
    queue_->add(std::move(item), queue_->now + nanoseconds(backgroundDelay_));
}

Handle VirtualRunLoop::after(double delay, std::function<void()> work) {
    requireMainThread("RunLoop::after");
    auto timer = std::make_shared<Work>();
    timer->work = std::move(work);
    return addTimer(timer, queue_->now + nanoseconds(std::max(delay, 0.0)));
}

Handle VirtualRunLoop::every(double interval, double tolerance, std::function<void()> work) {
    requireMainThread("RunLoop::every");
    if (interval <= 0) {
        contractViolation("a repeating timer needs an interval above 0");
    }
    auto timer = std::make_shared<Work>();
    timer->work = std::move(work);
    timer->base = queue_->now;
    timer->interval = interval;
    timer->tolerance = tolerance;
    timer->times = 1;
    const std::int64_t due = dueOf(*timer);
    return addTimer(timer, due);
}

Handle VirtualRunLoop::addTimer(const std::shared_ptr<Work>& timer, std::int64_t due) {
    timer->kind = Kind::Timer;
    const Work* key = timer.get();
    queue_->add(timer, due);
    return Handle([weakQueue = std::weak_ptr<Queue>(queue_), weakTimer = std::weak_ptr<Work>(timer), key] {
        const auto queue = weakQueue.lock();
        const auto alive = weakTimer.lock(); // else another timer may have taken its address
        if (queue && alive) {
            queue->cancel(key);
        }
    });
}

// Multiples of the interval from the start, so that repeating timers never drift.
std::int64_t VirtualRunLoop::dueOf(const Work& timer) const {
    const double lateness = usesTolerance_ ? timer.tolerance : 0;
    return timer.base + nanoseconds(static_cast<double>(timer.times) * *timer.interval + lateness);
}

std::optional<std::int64_t> VirtualRunLoop::nextDue() const {
    std::optional<std::int64_t> next;
    const auto consider = [&next](std::int64_t due) { next = next ? std::min(*next, due) : due; };
    {
        const std::lock_guard lock(queue_->mutex);
        if (!queue_->work.empty()) {
            consider(queue_->work.begin()->first.first);
        }
    }
    for (const Process* process : processes_) {
        if (const auto due = process->nextAfter(now() + halfStep)) {
            consider(nanoseconds(*due));
        }
    }
    return next;
}

void VirtualRunLoop::run(const std::shared_ptr<Work>& work) {
    if (work->kind == Kind::Background) {
        inBackground_ = true;
    } else if (work->interval) {
        // Armed again before it runs, so that it may drop its own handle.
        ++work->times;
        queue_->add(work, dueOf(*work));
    } else if (work->kind == Kind::Timer) {
        queue_->cancel(work.get());
    }
    try {
        work->work();
    } catch (...) {
        inBackground_ = false;
        throw;
    }
    inBackground_ = false;
}

void VirtualRunLoop::runWhatIsDue() {
    for (int count = 0; count < endlessLoop; ++count) {
        const auto processes = processes_;
        for (Process* process : processes) {
            process->happen(now() + halfStep);
        }
        std::shared_ptr<Work> work;
        {
            const std::lock_guard lock(queue_->mutex);
            const auto first = queue_->work.begin();
            if (first == queue_->work.end() || first->first.first > queue_->now) {
                return;
            }
            work = std::move(first->second);
            queue_->work.erase(first);
        }
        run(work);
    }
    contractViolation("work that asks for itself again and again at one moment");
}

void VirtualRunLoop::advance(double duration) {
    requireMainThread("advance");
    if (advancing_) {
        throw ImpossibleAct("advance() inside a callback: time passes only between them");
    }
    if (!(duration >= 0)) {
        throw ImpossibleAct("time can't run backwards");
    }
    struct Advancing {
        explicit Advancing(bool& isAdvancing)
            : flag(isAdvancing) {
            flag = true;
        }
        ~Advancing() { flag = false; }
        Advancing(const Advancing&) = delete;
        Advancing& operator=(const Advancing&) = delete;
        bool& flag;
    } const guard(advancing_);

    const std::int64_t target = queue_->now + nanoseconds(duration);
    const auto moveTo = [this](std::int64_t time) {
        const std::lock_guard lock(queue_->mutex);
        queue_->now = std::max(queue_->now, time);
    };
    runWhatIsDue();
    for (auto next = nextDue(); next && *next <= target; next = nextDue()) {
        moveTo(*next);
        runWhatIsDue();
    }
    moveTo(target);
}

std::vector<VirtualRunLoop::PendingTimer> VirtualRunLoop::pendingTimers() const {
    const std::lock_guard lock(queue_->mutex);
    std::vector<PendingTimer> timers;
    for (const auto& [order, work] : queue_->work) {
        if (work->kind == Kind::Timer) {
            timers.push_back({seconds(order.first), work->interval, work->tolerance});
        }
    }
    return timers;
}

bool VirtualRunLoop::isOnMainThread() const {
    return !inBackground_ && std::this_thread::get_id() == mainThread_;
}

void VirtualRunLoop::requireMainThread(const char* operation) const {
    if (!isOnMainThread()) {
        contractViolation(std::string(operation) + " was called off the main thread");
    }
}

Handle VirtualRunLoop::addProcess(Process& process) {
    processes_.push_back(&process);
    return Handle([this, &process] { std::erase(processes_, &process); });
}

} // namespace rb
