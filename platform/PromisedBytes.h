#pragma once

#include "platform/Bytes.h"
#include "platform/Handle.h"
#include "platform/Observers.h"

#include <atomic>
#include <functional>
#include <memory>

namespace rb {

class RunLoop;

// Bytes that take a while to make, off the main thread, and that somebody may want before they are there. The making
// begins at once, and is given up when nobody holds the promise any more. Shared and let go on the main thread.
class PromisedBytes {
public:
    // Off the main thread, where it may also be destroyed. Null when the bytes can't be made. Once `givenUp` is true
    // nobody wants them.
    using Making = std::function<SharedBytes(const std::atomic<bool>& givenUp)>;

    // The loop runs all of its background work before it goes.
    static std::shared_ptr<PromisedBytes> begin(RunLoop& loop, Making making);
    // A promise kept from the start, or with null broken from the start.
    static std::shared_ptr<PromisedBytes> settled(SharedBytes bytes);
    ~PromisedBytes();
    PromisedBytes(const PromisedBytes&) = delete;
    PromisedBytes& operator=(const PromisedBytes&) = delete;

    // Still being made. Any thread.
    bool isPending() const;
    // Null while they are being made, and when they couldn't be. Any thread.
    SharedBytes bytes() const;
    // They couldn't be made. Any thread.
    bool isBroken() const { return !isPending() && !bytes(); }
    // The same as bytes(), after at most that many seconds: only for where the system takes no later answer.
    SharedBytes await(double seconds) const;
    // Tells, in a later turn, that it isn't pending any more. Never, when it isn't already.
    Handle onSettled(std::function<void()> told) { return observers_.add(std::move(told)); }

private:
    struct State;
    explicit PromisedBytes(std::shared_ptr<State> state);

    std::shared_ptr<State> state_; // with the making
    Observers<> observers_;
};

} // namespace rb
