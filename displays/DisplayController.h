#pragma once

#include "displays/DetectionPass.h"
#include "displays/IdentifyPanels.h"
#include "displays/Pages.h"
#include "displays/ResolutionTrial.h"
#include "platform/Window.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// The Screens and connections window and what it shows: finds out about displays, ports and cables, keeps it current,
// and carries out standby of one display and trials of modes. Lives as long as the program. Main thread only.
class DisplayController {
public:
    // What the window's quick actions ask of the program.
    struct QuickActions {
        std::function<void()> lockAndSleep;
        std::function<void()> showHotKeySettings;
    };

    DisplayController(const Desktop& desktop, QuickActions quickActions);
    ~DisplayController();
    DisplayController(const DisplayController&) = delete;
    DisplayController& operator=(const DisplayController&) = delete;

    // Opens the window and looks at everything anew.
    void show();
    // A detection pass, unless something is under way.
    void refresh();
    // Something changed: a pass follows when it has been quiet for a moment.
    void connectionChanged();
    void navigate(int page);
    void toggleDetails(bool on);
    void identify(std::size_t row);
    void sleep(std::size_t row) { command("sleep", row); }
    void wake(std::size_t row) { command("wake", row); }
    void applyResolution(std::size_t row);

    const std::vector<DisplayRow>& rows() const { return rows_; }
    const ConnectionSnapshot& connections() const { return connections_; }
    bool busy() const { return busy_; }
    bool refreshPending() const { return refreshPending_; }
    // Null before the window was first shown.
    const Window* window() const { return window_.get(); }

private:
    void createWindow();
    void passFinished(ConnectionSnapshot snapshot, std::vector<DisplayRow> rows);
    void finishDetection();
    void connectionTimerFired();
    void command(const std::string& command, std::size_t row);
    // The item that the picker of the display shows; the display has a current mode.
    std::size_t selectedMode(const DisplayRow& display) const;
    void trialFinished(const TrialResult& result);
    void showSheet(const std::string& message, const std::string& information);

    void render();
    void markPageButtons();
    void resetScroll();
    void playEntranceIfNeeded();
    void keepPanelOnScreen();
    bool usingPanel() const;
    PageActions pageActions();

    const Desktop& desktop_;
    QuickActions quickActions_;
    HelperRunner runner_;
    IdentifyPanels labels_;
    std::unique_ptr<DetectionPass> pass_;
    std::unique_ptr<Window> window_;
    std::unique_ptr<ResolutionTrial> trial_; // before the window in its end, for its question lies on it

    std::vector<DisplayRow> rows_;
    ConnectionSnapshot connections_;
    bool busy_ = false;
    bool refreshPending_ = false;
    bool automaticRefresh_ = false;
    Handle connectionTimer_;
    std::vector<Handle> changes_;

    int selectedPage_ = displaysPage;
    bool technicalDetails_ = false;
    bool panelOpen_ = false;
    bool animateEntrance_ = false;
    double preservedScrollOrigin_ = 0;
    std::map<std::uint32_t, std::size_t> modePickers_; // what the user selected since the last rendering
    CardPool cards_;
    PageButtonLayers navigation_;
    Handle sheet_;
    Lifetime lifetime_;
};

} // namespace rb
