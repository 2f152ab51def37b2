#pragma once

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Desktop.h"
#include "displays/DisplayController.h"
#include "tests/displays/Modes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace rb {

inline constexpr const char* windowTitle = "Rook Bay · 屏幕与连接";

// The controller on a virtual desktop with a built-in display (1) and an external one (7), and helpers whose answers a
// test sets.
class DisplaysTest : public testing::Test {
protected:
    DisplaysTest() {
        setDisplays({builtin(), external()});
        auto& children = desktop_.childProcesses();
        children.install("CableHelper", [this](VirtualChild& child) {
            child.say(snapshot_);
            child.exit();
        });
        children.install("DisplayHelper", [this](VirtualChild& child) {
            const std::string command = child.arguments().at(0);
            if (const auto answer = answers_.find(command); answer != answers_.end()) {
                child.say(answer->second);
                child.exit();
            } // else it hangs
        });
        children.install("ResolutionHelper");
    }
    ~DisplaysTest() override { controller_.reset(); }

    static ConnectedDisplay builtin() { return *VirtualDisplays().display(1); }
    static ConnectedDisplay external(std::uint32_t id = 7, std::string name = "DELL U2723QE") {
        return {.identity = {.id = id, .vendor = 4268, .model = 16857, .serial = 77},
                .name = std::move(name),
                .modes = {modeOf(10, 3840, 2160, 60), modeOf(11, 1920, 1080, 60, 2), modeOf(12, 1920, 1080, 60)},
                .currentMode = modeOf(11, 1920, 1080, 60, 2)};
    }
    void setDisplays(const std::vector<ConnectedDisplay>& displays) {
        std::vector<Screen> screens;
        double x = 0;
        for (const ConnectedDisplay& display : displays) {
            screens.push_back({.id = display.identity.id,
                               .frame = {x, 0, 1440, 900},
                               .visibleFrame = {x, 0, 1440, 876},
                               .localizedName = display.name});
            x += 1440;
        }
        desktop_.screens().set(std::move(screens));
        desktop_.displays().set(displays);
    }

    DisplayController& controller() {
        if (!controller_) {
            controller_ = std::make_unique<DisplayController>(
                desktop_.services(), DisplayController::QuickActions{.lockAndSleep = [this] { ++locks_; },
                                                                     .showHotKeySettings = [this] { ++settings_; }});
        }
        return *controller_;
    }
    // Opens the window and lets the first pass end.
    DisplayController& opened() {
        controller().show();
        desktop_.advance(0.5);
        return controller();
    }
    VirtualWindow& window() { return desktop_.windows().titled(windowTitle); }
    // How often the cable helper was started: once in each pass.
    long passes() {
        const auto commands = desktop_.childProcesses().commands();
        return std::count(commands.begin(), commands.end(), "CableHelper");
    }
    std::string status(std::size_t row) { return controller().rows().at(row).status.value_or("(none)"); }

    VirtualDesktop desktop_;
    std::map<std::string, std::string> answers_{{"list", R"([{"id":7,"uuid":"bus-3"}])"},
                                                {"probe", R"({"ok":true})"},
                                                {"sleep", R"({"ok":true,"message":"已进入待机"})"},
                                                {"wake", R"({"ok":true,"verified":true,"message":"已唤醒"})"}};
    std::string snapshot_ = R"({"ports":[]})";
    int locks_ = 0;
    int settings_ = 0;
    std::unique_ptr<DisplayController> controller_;
};

// Every text of a tree in reading order, one a line; controls with their marks.
inline void dump(const View& view, std::string& lines) {
    if (const auto* label = std::get_if<LabelView>(&view.content)) {
        const char* mark = label->color == TextColor::SystemGreen      ? "+"
                           : label->color == TextColor::SecondaryLabel ? "~"
                                                                       : "";
        lines += mark + label->text + "\n";
    } else if (const auto* button = std::get_if<ButtonView>(&view.content)) {
        lines += (button->enabled ? "[" : "(") + button->title + (button->enabled ? "]\n" : ")\n");
    } else if (const auto* check = std::get_if<CheckBoxView>(&view.content)) {
        lines += (check->on ? "[x] " : "[ ] ") + check->title + "\n";
    } else if (const auto* popUp = std::get_if<PopUpView>(&view.content)) {
        for (std::size_t i = 0; i < popUp->items.size(); ++i) {
            lines += (popUp->selected == i ? "* " : "- ") + popUp->items[i] + "\n";
        }
        lines += popUp->enabled ? "" : "(picker disabled)\n";
        lines += view.toolTip.empty() ? "" : "? " + view.toolTip + "\n";
    } else {
        for (const View& child : childrenOf(view)) {
            dump(child, lines);
        }
    }
}

inline std::string dump(const View& view) {
    std::string lines;
    dump(view, lines);
    return lines;
}

} // namespace rb
