#pragma once

#include "platform/SessionLock.h"

#include <vector>

namespace rb {

class VirtualRunLoop;

// Writes down what was asked for, and when.
class VirtualSessionLock final : public SessionLock {
public:
    enum class Deed { StartScreenSaver, SleepDisplays };
    struct Entry {
        Deed deed;
        double time = 0; // on the run loop's clock
        bool onMainThread = true;
    };

    explicit VirtualSessionLock(const VirtualRunLoop& loop)
        : loop_(loop) {}

    void startScreenSaver() override;
    void sleepDisplays() override;

    const std::vector<Entry>& log() const { return log_; }

private:
    const VirtualRunLoop& loop_;
    std::vector<Entry> log_;
};

} // namespace rb
