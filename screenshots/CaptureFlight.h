#pragma once

#include "motion/Image.h"
#include "motion/Layer.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"
#include "platform/Panels.h"
#include "platform/Screens.h"

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <optional>

namespace rb {

struct CaptureFlightPlan {
    Image image;
    Rect from;       // where the capture was taken; screen coordinates, like `to`
    Rect to;         // where its card hangs
    double tilt = 0; // the card's resting tilt, degrees
    std::optional<Screen> screen;
    bool dark = false;
};

// One picture on its way from where it was taken into the place of its card, in a transparent panel of its own. Every
// frame is computed from the progress; nothing of it is left to the system's animations. Main thread only.
class RBCaptureFlight {
public:
    RBCaptureFlight(const Desktop& desktop, const CaptureFlightPlan& plan, std::function<void()> completion);
    RBCaptureFlight(const RBCaptureFlight&) = delete;
    RBCaptureFlight& operator=(const RBCaptureFlight&) = delete;

    // Shows the first frame and lets the others follow. `gone` is called in the end, when the panel has faded away.
    void run(std::function<void()> gone);
    // Draws the frame of a progress of 0 … 1, not eased.
    void update(double t);
    // The picture is on its way; false once the completion was called.
    bool inProgress() const { return static_cast<bool>(completion_); }

private:
    void tick();

    const Desktop& desktop_;
    std::unique_ptr<Panel> window_;
    std::shared_ptr<Layer> container_; // hangs from its top centre
    std::shared_ptr<Layer> glass_;
    std::shared_ptr<Layer> photo_;
    std::shared_ptr<Layer> edge_;
    std::shared_ptr<Layer> edgeMask_;
    std::shared_ptr<Layer> clip_;
    Rect from_;
    Rect to_;
    double tilt_;
    double start_ = 0; // media time
    Handle timer_;
    std::function<void()> completion_;
    std::function<void()> gone_;
};

// The flights under way, with those whose panels are still fading.
class RBCaptureFlights {
public:
    explicit RBCaptureFlights(const Desktop& desktop)
        : desktop_(desktop) {}

    // `completion` is called exactly once, when the picture has arrived.
    void flyImage(const CaptureFlightPlan& plan, std::function<void()> completion);
    std::size_t inProgress() const;

private:
    const Desktop& desktop_;
    std::list<std::shared_ptr<RBCaptureFlight>> flights_;
};

} // namespace rb
