#pragma once

#include "platform/RunLoop.h"

namespace rb {

// The main run loop with NSTimer in the common modes, and Grand Central Dispatch.
class MacRunLoop final : public RunLoop {
public:
    double now() const override;
    double wallClock() const override;
    void post(std::function<void()> work) override;
    Handle after(double delay, std::function<void()> work) override;
    Handle every(double interval, double tolerance, std::function<void()> work) override;
    void background(QualityOfService quality, std::function<void()> work) override;
};

} // namespace rb
