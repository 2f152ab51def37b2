#pragma once

#include "platform/RunLoop.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

class QObject;
class QThreadPool;
class QTimer;

namespace rb {

class Log;

// The run loop on Qt's event loop. One ordered queue holds posted work and timers; a single Qt timer wakes it for the
// next one that can't wait any longer, so nothing wakes the process while no timer is armed, and timers with
// tolerance share wake-ups.
class LinuxRunLoop final : public RunLoop {
public:
    // Qt's application may come later; nothing runs before its event loop does.
    explicit LinuxRunLoop(Log& log);
    // Waits for the background work. A timer that is left is a mistake of the program: logged, and in a debug build
    // the end of the process.
    ~LinuxRunLoop() override;
    LinuxRunLoop(const LinuxRunLoop&) = delete;
    LinuxRunLoop& operator=(const LinuxRunLoop&) = delete;

    double now() const override;
    double wallClock() const override;
    void post(std::function<void()> work) override;
    Handle after(double delay, std::function<void()> work) override;
    Handle every(double interval, double tolerance, std::function<void()> work) override;
    void background(QualityOfService quality, std::function<void()> work) override;

    // Runs all background work that was asked for to its end: before what it refers to is destroyed.
    void finishBackgroundWork();
    // Armed timers, for tests and instruments.
    std::size_t timerCount() const;

private:
    using Order = std::pair<std::int64_t, std::uint64_t>; // due time in nanoseconds, number
    struct Work;
    struct Queue;
    class Waker;

    Handle addTimer(std::shared_ptr<Work> timer);
    void runWhatIsDue();
    void armTimer();

    Log& log_;
    std::shared_ptr<Queue> queue_;
    std::unique_ptr<Waker> waker_;
    std::unique_ptr<QTimer> timer_;
    std::unique_ptr<QThreadPool> threads_;
    std::unique_ptr<QThreadPool> utilityThreads_; // which give way to everything else
};

} // namespace rb
