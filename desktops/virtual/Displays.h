#pragma once

#include "platform/Displays.h"
#include "platform/Observers.h"

#include <algorithm>
#include <utility>

namespace rb {

// The displays behind the virtual screens; to begin with the built-in one with two modes.
class VirtualDisplays final : public Displays {
public:
    VirtualDisplays() {
        const DisplayMode retina{
            .modeID = 1, .width = 1440, .height = 900, .pixelWidth = 2880, .pixelHeight = 1800, .refreshRate = 60};
        const DisplayMode plain{
            .modeID = 2, .width = 1280, .height = 800, .pixelWidth = 1280, .pixelHeight = 800, .refreshRate = 60};
        displays_.push_back({.identity = {.id = 1, .vendor = 1552, .model = 40992, .serial = 0},
                             .name = "Built-in",
                             .main = true,
                             .builtin = true,
                             .modes = {retina, plain},
                             .currentMode = retina});
    }

    std::vector<ConnectedDisplay> all() const override { return displays_; }
    std::optional<ConnectedDisplay> display(std::uint32_t id) const override {
        const auto found = std::find_if(displays_.begin(), displays_.end(), [id](const ConnectedDisplay& candidate) {
            return candidate.identity.id == id;
        });
        return found != displays_.end() ? std::optional(*found) : std::nullopt;
    }
    Handle onChange(std::function<void()> changed) override { return observers_.add(std::move(changed)); }

    // Other displays; observers are told.
    void set(std::vector<ConnectedDisplay> displays) {
        displays_ = std::move(displays);
        observers_.notify();
    }
    // A helper sets a mode; what follows from it is told with notify().
    void setCurrentMode(std::uint32_t id, const DisplayMode& mode) {
        for (ConnectedDisplay& candidate : displays_) {
            if (candidate.identity.id == id) {
                candidate.currentMode = mode;
            }
        }
    }
    void notify() { observers_.notify(); }

private:
    std::vector<ConnectedDisplay> displays_;
    Observers<> observers_;
};

} // namespace rb
