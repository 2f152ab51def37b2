#include "displays/ResolutionTrial.h"

#include "platform/ChildProcesses.h"
#include "platform/Displays.h"
#include "platform/RunLoop.h"
#include "platform/Window.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double firstLineLimit = 8.0;     // seconds
constexpr double confirmationLimit = 19.0; // seconds; one before the helper's own
constexpr std::size_t longestLine = 4096;  // bytes
constexpr std::size_t mostOutput = std::size_t{1024} * 1024;
constexpr std::size_t keepButton = 0;
constexpr std::size_t restoreButton = 1;

} // namespace

ResolutionTrial::ResolutionTrial(const Desktop& desktop, Request request, Stage stage,
                                 std::function<void(const TrialResult&)> finished)
    : desktop_(desktop)
    , request_(std::move(request))
    , stage_(std::move(stage))
    , finished_(std::move(finished)) {}

ResolutionTrial::~ResolutionTrial() {
    if (resolutionTask_) {
        resolutionTask_->closeInput();
    }
}

bool ResolutionTrial::start() {
    resolutionTask_ = desktop_.childProcesses.start(
        {.program = request_.helper,
         .arguments = {"trial", request_.identity, std::to_string(request_.chosen.modeID)},
         .pipesInput = true,
         .output = [this](std::string_view piece) { received(piece); },
         .ended = [this] { helperEnded(); }});
    if (!resolutionTask_) {
        return false;
    }
    firstLineDeadline_ = desktop_.runLoop.after(firstLineLimit, [this] { firstLineComplete(); });
    return true;
}

void ResolutionTrial::received(std::string_view piece) {
    if (firstLineRead_) {
        rest_ += piece.substr(0, mostOutput - std::min(mostOutput, rest_.size()));
        return;
    }
    const std::size_t newline = piece.find('\n');
    const std::size_t room = longestLine - firstLine_.size();
    if (newline != std::string_view::npos && newline < room) {
        firstLine_ += piece.substr(0, newline);
        piece.remove_prefix(newline + 1);
    } else if (piece.size() < room) {
        firstLine_ += piece;
        return;
    } else {
        firstLine_ += piece.substr(0, room);
        piece.remove_prefix(room);
    }
    firstLineRead_ = true;
    rest_ += piece.substr(0, mostOutput);
    firstLineComplete();
}

void ResolutionTrial::firstLineComplete() {
    firstLineRead_ = true;
    firstLineDeadline_.reset();
    first_ = parseHelperAnswer(firstLine_);
    if (first_ && first_->ok && first_->trial) {
        askToKeep();
    } else {
        resolutionTask_->closeInput();
    }
}

void ResolutionTrial::askToKeep() {
    stage_.keepPanelOnScreen();
    asking_ = true;
    sheet_ = stage_.window.beginSheet(
        {.messageText = "保留这个显示模式吗？",
         .informativeText = request_.chosen.label + "\n请确认画面正常。20 秒内未确认将自动恢复原模式；即使 Rook Bay "
                                                    "退出，独立保护模块也会尝试恢复。",
         .buttons = {{.title = "保留"}, {.title = "恢复原模式"}}},
        [this](std::size_t button) { confirmationEnded(button); });
    confirmationTimer_ = desktop_.runLoop.after(confirmationLimit, [this] { confirmationEnded(restoreButton); });
}

void ResolutionTrial::confirmationEnded(std::size_t button) {
    if (!std::exchange(asking_, false)) {
        return;
    }
    confirmationTimer_.reset();
    sheet_.reset();
    if (button == keepButton && resolutionTask_->isRunning()) {
        resolutionTask_->write("keep\n");
    }
    resolutionTask_->closeInput();
}

void ResolutionTrial::helperEnded() {
    if (!firstLineRead_) {
        firstLineRead_ = true;
        firstLineDeadline_.reset();
        first_ = parseHelperAnswer(firstLine_);
    }
    confirmationEnded(restoreButton);
    resolutionTask_.reset();

    const bool anyRest = rest_.find_first_not_of(" \t\r\n") != std::string::npos;
    const std::optional<HelperAnswer> final = anyRest ? parseHelperAnswer(rest_) : first_;
    TrialResult result;
    if (final && final->kept) {
        result = readBack();
    } else if (final) {
        result = {.ok = final->ok, .kept = false, .message = final->message};
    }
    // A trial that nobody confirmed isn't done, whatever the first answer said.
    result.ok = result.ok && (result.kept || !final->trial);
    // The receiver may drop this trial.
    const auto finished = std::move(finished_);
    finished(result);
}

TrialResult ResolutionTrial::readBack() const {
    const auto display = desktop_.displays.display(request_.displayId);
    const bool same = display && display->currentMode && modeIdentity(display->identity) == request_.identity &&
                      isSameMode(request_.chosen, RBModeInfo(*display->currentMode));
    if (!same) {
        return {.ok = false,
                .kept = false,
                .message = "辅助模块已退出，但读回的实际模式与选择不一致。请检查当前分辨率；未标记为成功。"};
    }
    return {.ok = true, .kept = true, .message = request_.chosen.label + " · 辅助模块退出后已读回确认。"};
}

} // namespace rb
