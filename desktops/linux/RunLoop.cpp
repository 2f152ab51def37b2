#include "desktops/linux/RunLoop.h"

#include "platform/Log.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cassert>
#include <chrono>
#include <cmath>
#include <limits>
#include <sys/resource.h>
#include <utility>

namespace rb {

namespace {

// A few helpers at once are plenty; more would only fight over the disk.
constexpr int backgroundThreads = 4;

std::int64_t nanosecondsNow() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
}

// Seconds as nanoseconds, kept within a range (146 years) in which sums can't overflow.
std::int64_t nanoseconds(double seconds) {
    constexpr double most = static_cast<double>(std::numeric_limits<std::int64_t>::max()) / 2;
    const double value = seconds * 1e9;
    return value > 0 ? static_cast<std::int64_t>(std::min(value, most)) : 0;
}

// Lowers the calling thread's priority, for good.
void giveWay() {
    constexpr int utilityNiceness = 10;
    thread_local bool done = false;
    if (!std::exchange(done, true)) {
        setpriority(PRIO_PROCESS, 0, utilityNiceness); // of this thread only, on Linux
    }
}

} // namespace

struct LinuxRunLoop::Work {
    std::function<void()> work;
    bool isTimer = false;
    std::int64_t due = 0;
    std::int64_t tolerance = 0;
    std::optional<double> interval = std::nullopt;
    std::int64_t start = 0; // of a repeating timer
};

// Shared with the handles, which may outlive the loop.
struct LinuxRunLoop::Queue {
    mutable std::mutex mutex;
    std::map<Order, std::shared_ptr<Work>> work;
    std::map<const Work*, Order> timers;
    std::uint64_t next = 0;
    bool wakeSent = false;

    void add(std::shared_ptr<Work> item) {
        const Order order{item->due, next++};
        if (item->isTimer) {
            timers[item.get()] = order;
        }
        work.emplace(order, std::move(item));
    }
    void cancel(const Work* timer) {
        const std::lock_guard lock(mutex);
        if (const auto entry = timers.find(timer); entry != timers.end()) {
            work.erase(entry->second);
            timers.erase(entry);
        }
    }
};

// Carries the wake-up to the main thread.
class LinuxRunLoop::Waker final : public QObject {
public:
    explicit Waker(LinuxRunLoop& loop)
        : loop_(loop) {}
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) {
            return QObject::event(event);
        }
        loop_.runWhatIsDue();
        return true;
    }

private:
    LinuxRunLoop& loop_;
};

LinuxRunLoop::LinuxRunLoop(Log& log)
    : log_(log)
    , queue_(std::make_shared<Queue>())
    , waker_(std::make_unique<Waker>(*this)) {}

LinuxRunLoop::~LinuxRunLoop() {
    finishBackgroundWork();
    const std::size_t left = timerCount();
    if (left > 0) {
        log_.write(std::to_string(left) + " timers were left behind");
    }
    assert(left == 0);
}

double LinuxRunLoop::now() const {
    return static_cast<double>(nanosecondsNow()) / 1e9;
}

double LinuxRunLoop::wallClock() const {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void LinuxRunLoop::post(std::function<void()> work) {
    auto item = std::make_shared<Work>();
    item->work = std::move(work);
    item->due = nanosecondsNow();
    const std::lock_guard lock(queue_->mutex);
    queue_->add(std::move(item));
    if (!std::exchange(queue_->wakeSent, true)) {
        QCoreApplication::postEvent(waker_.get(), new QEvent(QEvent::User));
    }
}

Handle LinuxRunLoop::after(double delay, std::function<void()> work) {
    auto timer = std::make_shared<Work>();
    timer->work = std::move(work);
    timer->due = nanosecondsNow() + nanoseconds(delay);
    return addTimer(std::move(timer));
}

Handle LinuxRunLoop::every(double interval, double tolerance, std::function<void()> work) {
    auto timer = std::make_shared<Work>();
    timer->work = std::move(work);
    timer->interval = interval;
    timer->tolerance = nanoseconds(tolerance);
    timer->start = nanosecondsNow();
    timer->due = timer->start + nanoseconds(interval);
    return addTimer(std::move(timer));
}

Handle LinuxRunLoop::addTimer(std::shared_ptr<Work> timer) {
    timer->isTimer = true;
    const std::weak_ptr<Work> weak = timer;
    {
        const std::lock_guard lock(queue_->mutex);
        queue_->add(std::move(timer));
    }
    armTimer();
    return Handle([weak, queue = queue_] {
        // The wake-up stays armed: one turn for nothing is cheaper than arming anew each time.
        if (const auto held = weak.lock()) {
            queue->cancel(held.get());
        }
    });
}

void LinuxRunLoop::armTimer() {
    std::optional<std::int64_t> latest;
    {
        const std::lock_guard lock(queue_->mutex);
        for (const auto& [order, work] : queue_->work) {
            if (!work->isTimer && queue_->wakeSent) {
                continue; // Posted work whose wake-up is under way.
            }
            latest = std::min(latest.value_or(order.first + work->tolerance), order.first + work->tolerance);
        }
    }
    if (!latest) {
        if (timer_) {
            timer_->stop();
        }
        return;
    }
    if (!timer_) {
        timer_ = std::make_unique<QTimer>();
        timer_->setSingleShot(true);
        timer_->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer_.get(), &QTimer::timeout, timer_.get(), [this] { runWhatIsDue(); });
    }
    constexpr std::int64_t longest = 24LL * 3600 * 1000; // then simply armed again
    const std::int64_t wait = std::max<std::int64_t>(0, *latest - nanosecondsNow());
    timer_->start(static_cast<int>(std::min(longest, (wait + 999'999) / 1'000'000)));
}

// One turn: what was due when it began. Work that it asks for comes in a later turn. The wake-up for what follows is
// armed before each piece of work, because the work may run an event loop of its own (a menu, a drag).
void LinuxRunLoop::runWhatIsDue() {
    const std::int64_t now = nanosecondsNow();
    std::uint64_t end = 0;
    {
        const std::lock_guard lock(queue_->mutex);
        queue_->wakeSent = false;
        end = queue_->next;
    }
    for (;;) {
        std::shared_ptr<Work> item;
        {
            const std::lock_guard lock(queue_->mutex);
            const auto first = queue_->work.begin();
            if (first == queue_->work.end() || first->first.first > now || first->first.second >= end) {
                break;
            }
            item = first->second;
            queue_->work.erase(first);
            queue_->timers.erase(item.get());
            if (item->interval) {
                // On the grid of its start, so that lateness doesn't add up; missed rounds are dropped.
                const std::int64_t interval = std::max<std::int64_t>(1, nanoseconds(*item->interval));
                const std::int64_t rounds = (now - item->start) / interval + 1;
                item->due = item->start + rounds * interval;
                queue_->add(item);
            }
        }
        armTimer();
        item->work();
    }
    armTimer();
}

void LinuxRunLoop::background(QualityOfService quality, std::function<void()> work) {
    const bool isUtility = quality == QualityOfService::Utility;
    std::unique_ptr<QThreadPool>& threads = isUtility ? utilityThreads_ : threads_;
    if (!threads) {
        threads = std::make_unique<QThreadPool>();
        threads->setMaxThreadCount(backgroundThreads);
    }
    if (!isUtility) {
        threads->start(std::move(work));
        return;
    }
    threads->start([work = std::move(work)] {
        giveWay();
        work();
    });
}

void LinuxRunLoop::finishBackgroundWork() {
    for (const auto* threads : {&threads_, &utilityThreads_}) {
        if (*threads) {
            (*threads)->waitForDone();
        }
    }
}

std::size_t LinuxRunLoop::timerCount() const {
    const std::lock_guard lock(queue_->mutex);
    return queue_->timers.size();
}

} // namespace rb
