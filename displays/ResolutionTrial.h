#pragma once

#include "displays/HelperAnswer.h"
#include "displays/ModeRecord.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"

#include <functional>
#include <memory>
#include <string>

namespace rb {

class ChildProcess;
class Window;

// How a trial ended: the text for the user goes with a failure.
struct TrialResult {
    bool ok = false;
    bool kept = false;
    std::optional<std::string> message = std::nullopt;
};

// One trial of a display mode: the helper sets the mode, the user is asked to keep it, and a claim of success is
// checked against what the display shows. Destroyed in mid-trial it closes the helper's input, so that the old mode
// comes back. Main thread only.
class ResolutionTrial {
public:
    struct Request {
        std::string helper; // path of the resolution helper
        std::uint32_t displayId = 0;
        std::string identity;
        ModeRecord chosen;
    };
    // What the trial asks of the window's owner.
    struct Stage {
        // Brings the window where the user sees it.
        std::function<void()> keepPanelOnScreen;
        // The window for the question.
        Window& window;
    };

    ResolutionTrial(const Desktop& desktop, Request request, Stage stage,
                    std::function<void(const TrialResult&)> finished);
    ~ResolutionTrial();
    ResolutionTrial(const ResolutionTrial&) = delete;
    ResolutionTrial& operator=(const ResolutionTrial&) = delete;

    // False when the helper can't be started; then nothing is told.
    bool start();

private:
    void received(std::string_view piece);
    void firstLineComplete();
    void askToKeep();
    // 0 keeps, 1 restores.
    void confirmationEnded(std::size_t button);
    void helperEnded();
    TrialResult readBack() const;

    const Desktop& desktop_;
    Request request_;
    Stage stage_;
    std::function<void(const TrialResult&)> finished_;
    std::unique_ptr<ChildProcess> resolutionTask_;
    Handle firstLineDeadline_;
    Handle confirmationTimer_;
    Handle sheet_;
    bool asking_ = false;
    bool firstLineRead_ = false;
    std::string firstLine_;
    std::string rest_;
    std::optional<HelperAnswer> first_;
};

} // namespace rb
