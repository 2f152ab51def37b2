#pragma once

#include "platform/Handle.h"

#include <functional>
#include <memory>
#include <vector>

namespace rb {

enum class QualityOfService { UserInitiated, Utility };

// The main run loop: clocks, posted work and timers. Timers fire on the main thread also while a menu is open
// or the mouse is tracked. Work of equal due time runs in the order in which it was asked for. Everything but
// post() belongs to the main thread. At its death no timer may be left.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    // Seconds on a clock that never jumps; also the media time of layers.
    virtual double now() const = 0;
    // Seconds since 1970 on the wall clock, which may jump.
    virtual double wallClock() const = 0;

    // Runs the work on the main thread in a later turn of the loop. Callable from any thread.
    virtual void post(std::function<void()> work) = 0;
    // Once, `delay` seconds from now (at least in a later turn). The handle is spent afterwards.
    virtual Handle after(double delay, std::function<void()> work) = 0;
    // Again and again; `tolerance` seconds of lateness may be used to save wake-ups. The work may drop the handle.
    virtual Handle every(double interval, double tolerance, std::function<void()> work) = 0;
    // Runs `work` off the main thread; it must not touch main-thread state. Results come back through post().
    virtual void background(QualityOfService quality, std::function<void()> work) = 0;
};

// Delayed calls of one owner that need no individual handle; all of them end with the owner.
class DelayedCalls {
public:
    explicit DelayedCalls(RunLoop& loop)
        : loop_(loop) {}
    DelayedCalls(const DelayedCalls&) = delete;
    DelayedCalls& operator=(const DelayedCalls&) = delete;

    void after(double delay, std::function<void()> work);

private:
    struct Call {
        Handle timer;
        bool done = false;
    };
    RunLoop& loop_;
    std::vector<std::shared_ptr<Call>> calls_;
};

} // namespace rb
