#include "displays/DisplayController.h"

#include "displays/WindowPlacement.h"
#include "platform/Appearance.h"
#include "platform/Application.h"
#include "platform/ChildProcesses.h"
#include "platform/Displays.h"
#include "platform/Hardware.h"
#include "platform/RunLoop.h"
#include "platform/Screens.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double debounce = 1.5; // seconds
constexpr Reveal entrance{.duration = 0.4, .delay = 0.045, .last = 8, .slide = 12};
constexpr double pageButtonFade = 0.22; // seconds
constexpr double pageButtonAlpha = 0.25;

} // namespace

DisplayController::DisplayController(const Desktop& desktop, QuickActions quickActions)
    : desktop_(desktop)
    , quickActions_(std::move(quickActions))
    , runner_(desktop)
    , labels_(desktop)
    , navigation_{Layer::create(), Layer::create()} {
    const auto changed = [this] { connectionChanged(); };
    changes_.push_back(desktop_.screens.onChange(changed));
    changes_.push_back(desktop_.displays.onChange(changed));
    changes_.push_back(desktop_.hardware.onWake(changed));
    changes_.push_back(desktop_.hardware.onUSBChange(changed));
    for (const auto& layer : navigation_) {
        layer->change().cornerRadius = 10;
        layer->change().backgroundColor = Color::clear();
    }
}

DisplayController::~DisplayController() = default;

void DisplayController::show() {
    if (!window_) {
        createWindow();
    }
    panelOpen_ = true;
    animateEntrance_ = true;
    keepPanelOnScreen();
    desktop_.application.activateIgnoringOtherApps();
    window_->makeKeyAndOrderFront();
    refresh();
}

void DisplayController::createWindow() {
    window_ = desktop_.windows.createWindow({.contentSize = {920, 720},
                                             .title = "Rook Bay · 屏幕与连接",
                                             .closable = true,
                                             .resizable = true,
                                             .minimumSize = Size{840, 480},
                                             .dark = true,
                                             .transparentTitleBar = true,
                                             .translucent = true,
                                             .willClose = [this] { panelOpen_ = false; }});
    render();
    window_->center();
}

void DisplayController::refresh() {
    if (busy_) {
        return;
    }
    connectionTimer_.reset();
    refreshPending_ = false;
    busy_ = true;
    std::vector<DisplayRow> rows;
    for (const ConnectedDisplay& display : desktop_.displays.all()) {
        rows.push_back(rowOf(display));
    }
    render();
    pass_ = std::make_unique<DetectionPass>(runner_, std::move(rows), rows_,
                                            [this](ConnectionSnapshot snapshot, std::vector<DisplayRow> complete) {
                                                passFinished(std::move(snapshot), std::move(complete));
                                            });
    pass_->start();
}

void DisplayController::passFinished(ConnectionSnapshot snapshot, std::vector<DisplayRow> rows) {
    pass_.reset();
    if (!refreshPending_) {
        connections_ = std::move(snapshot);
        rows_ = std::move(rows);
    }
    keepPanelOnScreen();
    finishDetection();
}

void DisplayController::finishDetection() {
    busy_ = false;
    render();
    keepPanelOnScreen();
    automaticRefresh_ = false;
    if (refreshPending_) {
        connectionChanged();
    }
}

void DisplayController::connectionChanged() {
    refreshPending_ = true;
    connectionTimer_ = desktop_.runLoop.after(debounce, [this] { connectionTimerFired(); });
}

void DisplayController::connectionTimerFired() {
    connectionTimer_.reset();
    if (!window_) {
        return;
    }
    keepPanelOnScreen();
    if (!busy_) {
        automaticRefresh_ = true;
        refresh();
    }
}

void DisplayController::navigate(int page) {
    animateEntrance_ = animateEntrance_ || page != selectedPage_;
    selectedPage_ = page;
    render();
    window_->setScrollOffset(pageScrollIdentifier, 0);
    preservedScrollOrigin_ = 0; // of the other page
}

void DisplayController::toggleDetails(bool on) {
    technicalDetails_ = on;
    render();
}

void DisplayController::identify(std::size_t row) {
    if (row >= rows_.size()) {
        return;
    }
    const std::vector<Screen> screens = desktop_.screens.all();
    const auto screen = std::find_if(screens.begin(), screens.end(),
                                     [id = rows_[row].id](const Screen& candidate) { return candidate.id == id; });
    if (screen != screens.end()) {
        labels_.show(*screen, row + 1);
    }
}

void DisplayController::command(const std::string& command, std::size_t row) {
    if (row >= rows_.size() || busy_ || rows_[row].uuid.empty()) {
        return;
    }
    busy_ = true;
    rows_[row].status = sendingCommandStatus;
    render();
    runner_.run({command, rows_[row].uuid}, [this, command, row](const HelperAnswer& answer) {
        applyCommand(rows_[row], command, answer);
        finishDetection();
    });
}

std::size_t DisplayController::selectedMode(const DisplayRow& display) const {
    if (const auto selected = modePickers_.find(display.id); selected != modePickers_.end()) {
        return selected->second;
    }
    // Untouched: the picker shows the current mode, or its first item when that isn't among them.
    const auto current = std::find_if(display.modes.begin(), display.modes.end(), [&display](const ModeRecord& mode) {
        return mode.modeID == display.currentMode->modeID;
    });
    return current == display.modes.end() ? 0 : static_cast<std::size_t>(current - display.modes.begin());
}

void DisplayController::applyResolution(std::size_t row) {
    if (busy_ || row >= rows_.size() || !rows_[row].currentMode || rows_[row].modeIdentity.empty()) {
        return;
    }
    const DisplayRow& display = rows_[row];
    const std::size_t selected = selectedMode(display);
    if (selected >= display.modes.size()) {
        return;
    }
    const ModeRecord& chosen = display.modes[selected];
    const auto helper = desktop_.childProcesses.resourcePath("ResolutionHelper");
    if (chosen.modeID == display.currentMode->modeID || !helper) {
        return;
    }
    trial_ = std::make_unique<ResolutionTrial>(
        desktop_,
        ResolutionTrial::Request{
            .helper = *helper, .displayId = display.id, .identity = display.modeIdentity, .chosen = chosen},
        ResolutionTrial::Stage{.keepPanelOnScreen = [this] { keepPanelOnScreen(); }, .window = *window_},
        [this](const TrialResult& result) { trialFinished(result); });
    if (!trial_->start()) {
        trial_.reset();
        showSheet("无法启动分辨率模块", "");
        return;
    }
    busy_ = true;
    render();
}

void DisplayController::trialFinished(const TrialResult& result) {
    // The trial is in the middle of telling this.
    desktop_.runLoop.post([gone = std::shared_ptr<ResolutionTrial>(std::move(trial_))] {});
    refreshPending_ = true;
    finishDetection();
    if (!result.ok) {
        showSheet("显示模式未完成", result.message.value_or("请在系统设置中检查显示器；模块未返回确认。"));
    }
}

void DisplayController::showSheet(const std::string& message, const std::string& information) {
    sheet_ = window_->beginSheet({.messageText = message, .informativeText = information},
                                 [this](std::size_t) { sheet_.reset(); });
}

void DisplayController::render() {
    if (!window_) {
        return;
    }
    if (automaticRefresh_) {
        preservedScrollOrigin_ = window_->scrollOffset(pageScrollIdentifier);
    }
    modePickers_.clear();
    markPageButtons();
    const PageState state{.rows = rows_,
                          .connections = connections_,
                          .busy = busy_,
                          .selectedPage = selectedPage_,
                          .technicalDetails = technicalDetails_,
                          .blue = desktop_.appearance.color(SystemColor::Blue)};
    window_->setContent(windowContent(state, pageActions(), cards_, navigation_));
    resetScroll();
}

void DisplayController::markPageButtons() {
    const Color blue = desktop_.appearance.color(SystemColor::Blue);
    for (std::size_t page = 0; page < navigation_.size(); ++page) {
        const bool selected = static_cast<int>(page) == selectedPage_;
        const Color background = blue.withAlpha(selected ? pageButtonAlpha : 0);
        if (navigation_[page]->model().backgroundColor != background) {
            RBAnimateLayerValue(navigation_[page], KeyPath::BackgroundColor, background, pageButtonFade);
        }
    }
}

void DisplayController::resetScroll() {
    playEntranceIfNeeded();
    const bool keeps = automaticRefresh_;
    desktop_.runLoop.post(lifetime_.guard(
        [this, keeps] { window_->setScrollOffset(pageScrollIdentifier, keeps ? preservedScrollOrigin_ : 0); }));
}

void DisplayController::playEntranceIfNeeded() {
    if (animateEntrance_ && !busy_ && !automaticRefresh_) {
        animateEntrance_ = false;
        window_->reveal(pageStackIdentifier, entrance);
    }
}

void DisplayController::keepPanelOnScreen() {
    const std::vector<Screen> screens = desktop_.screens.all();
    if (!panelOpen_ || !window_ || window_->isMiniaturized() || screens.empty()) {
        return;
    }
    if (const auto frame = betterFrame(window_->frame(), screens, desktop_.screens.main())) {
        window_->setFrame(*frame);
    }
    if (usingPanel() || !window_->isVisible()) {
        window_->orderFront();
    }
}

bool DisplayController::usingPanel() const {
    if (!desktop_.windows.isApplicationActive()) {
        return false;
    }
    return !desktop_.windows.hasKeyWindow() || window_->isKeyWindow();
}

PageActions DisplayController::pageActions() {
    return {.refresh = [this] { refresh(); },
            .identify = [this](std::size_t row) { identify(row); },
            .sleep = [this](std::size_t row) { sleep(row); },
            .wake = [this](std::size_t row) { wake(row); },
            .applyResolution = [this](std::size_t row) { applyResolution(row); },
            .selectMode =
                [this](std::size_t row, std::size_t mode) {
                    if (row < rows_.size()) {
                        modePickers_[rows_[row].id] = mode;
                    }
                },
            .toggleDetails = [this](bool on) { toggleDetails(on); },
            .navigate = [this](int page) { navigate(page); },
            .lockAndSleep = quickActions_.lockAndSleep,
            .showHotKeySettings = quickActions_.showHotKeySettings};
}

} // namespace rb
