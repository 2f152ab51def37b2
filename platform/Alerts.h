#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace rb {

struct AlertButton {
    std::string title = {};
    bool destructive = false;
    friend bool operator==(const AlertButton&, const AlertButton&) = default;
};

struct Alert {
    std::string messageText = {};
    std::string informativeText = {};
    // First is the default button. None: the desktop's single OK button.
    std::vector<AlertButton> buttons = {};
    friend bool operator==(const Alert&, const Alert&) = default;
};

// Modal questions. Modal means that the program's other windows wait and that the asking flow goes on in the
// answer; the run loop keeps running.
class Alerts {
public:
    virtual ~Alerts() = default;
    // The answer gets the index of the chosen button; closing the alert otherwise chooses the last one (the only
    // one, when there are none). Alerts asked while another is up are shown one after another.
    virtual void runModal(const Alert& alert, std::function<void(std::size_t button)> answer) = 0;
};

} // namespace rb
