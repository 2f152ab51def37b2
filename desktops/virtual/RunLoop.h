#pragma once

#include "platform/RunLoop.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace rb {

// A run loop whose time passes only when a test advances it. Everything runs on the test's thread in one order: by
// due time, then by when it was asked for. Background work runs as a step of its own during which the loop counts
// as off the main thread, so that services notice who touches them from there.
class VirtualRunLoop final : public RunLoop {
public:
    struct PendingTimer {
        double due = 0; // on the clock of now()
        std::optional<double> interval = std::nullopt;
        double tolerance = 0;
    };
    // Something besides timers that happens by itself as time passes (the ends of animations).
    class Process {
    public:
        virtual ~Process() = default;
        // The next time after `time` at which something happens.
        virtual std::optional<double> nextAfter(double time) const = 0;
        virtual void happen(double time) = 0;
    };

    VirtualRunLoop();
    // Ends the process when a timer is left: whoever armed it forgot it.
    ~VirtualRunLoop() override;
    VirtualRunLoop(const VirtualRunLoop&) = delete;
    VirtualRunLoop& operator=(const VirtualRunLoop&) = delete;

    double now() const override;
    double wallClock() const override;
    void post(std::function<void()> work) override;
    Handle after(double delay, std::function<void()> work) override;
    Handle every(double interval, double tolerance, std::function<void()> work) override;
    void background(QualityOfService quality, std::function<void()> work) override;

    // Lets that many seconds pass, with everything that falls due on the way. 0 only runs what is due now.
    void advance(double seconds);
    // From now on work in the background begins that many seconds after it was asked for, as on a busy machine.
    void setBackgroundDelay(double seconds) { backgroundDelay_ = seconds; }
    // The user or the network sets the clock; timers don't notice.
    void setWallClock(double secondsSince1970);
    // With true, repeating timers come as late as their tolerance allows.
    void setUsesTolerance(bool uses) { usesTolerance_ = uses; }

    std::vector<PendingTimer> pendingTimers() const;
    bool isOnMainThread() const;
    // Ends the process, naming the operation, when called off the main thread.
    void requireMainThread(const char* operation) const;

    // The process outlives its registration.
    Handle addProcess(Process& process);

private:
    enum class Kind { Posted, Background, Timer };
    using Order = std::pair<std::int64_t, std::uint64_t>; // due time in nanoseconds, number
    struct Work {
        Kind kind = Kind::Posted;
        std::function<void()> work;
        std::int64_t base = 0; // a repeating timer's start
        std::optional<double> interval;
        double tolerance = 0;
        std::uint64_t times = 0;
    };
    struct Queue {
        mutable std::mutex mutex;
        std::map<Order, std::shared_ptr<Work>> work;
        std::uint64_t next = 0;
        std::int64_t now = 0;
        // The order under which a timer waits; it changes each time a repeating one fires.
        std::map<const Work*, Order> timers;

        Order add(std::shared_ptr<Work> item, std::int64_t due);
        void cancel(const Work* timer);
    };

    Handle addTimer(const std::shared_ptr<Work>& timer, std::int64_t due);
    std::int64_t dueOf(const Work& timer) const;
    void runWhatIsDue();
    void run(const std::shared_ptr<Work>& work);
    std::optional<std::int64_t> nextDue() const;

    std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();
    std::vector<Process*> processes_;
    std::thread::id mainThread_ = std::this_thread::get_id();
    double wallClockOffset_ = 0;
    double backgroundDelay_ = 0;
    bool inBackground_ = false;
    bool advancing_ = false;
    bool usesTolerance_ = false;
};

} // namespace rb
