#pragma once

#include "platform/Alerts.h"
#include "platform/RunLoop.h"

#include <deque>

namespace rb {

// NSAlert, run modally one after another. Each begins in a turn of the run loop of its own: were it run inside the
// caller's, the caller would stand still until the user answers, and a caller on the main dispatch queue would hold up
// all posted work with it.
class MacAlerts final : public Alerts {
public:
    explicit MacAlerts(RunLoop& loop)
        : loop_(loop) {}
    void runModal(const Alert& alert, std::function<void(std::size_t button)> answer) override;

private:
    struct Asked {
        Alert alert;
        std::function<void(std::size_t button)> answer;
    };
    void showFirst();

    RunLoop& loop_;
    std::deque<Asked> asked_; // the one on the screen first
    Handle turn_;
};

} // namespace rb
