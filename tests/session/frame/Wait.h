#pragma once

#include <chrono>
#include <poll.h>

namespace rb {

// Seconds on the monotonic clock, which is also the X server's.
inline double monotonicNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Asks again and again, every few milliseconds, until the condition holds; false when it doesn't within the limit
// (seconds). The only way in which session tests let time pass.
template <typename Condition>
[[nodiscard]] bool waitUntil(const Condition& condition, double limit = 15) {
    const double end = monotonicNow() + limit;
    while (!condition()) {
        if (monotonicNow() > end) {
            return false;
        }
        ::poll(nullptr, 0, 3);
    }
    return true;
}

// The opposite: true when the condition held all the while.
template <typename Condition>
[[nodiscard]] bool staysTrue(const Condition& condition, double seconds) {
    return !waitUntil([&] { return !condition(); }, seconds);
}

} // namespace rb
