#pragma once

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Desktop.h"
#include "desktops/virtual/Menus.h"
#include "menubar/MenuBarHider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace rb {

inline constexpr const char* control = "RookBayHiderControl";
inline constexpr const char* separator = "RookBayHiderSeparator";

// A hider on a virtual desktop with one screen of 1512 × 982 points and a menu bar of 38, in which three other
// programs have icons: two left of the dot and one right of it. The introduction was shown in an earlier run.
class HiderTest : public testing::Test {
protected:
    HiderTest() {
        desktop.screens().set({{.id = 1, .frame = {0, 0, 1512, 982}, .visibleFrame = {0, 0, 1512, 944}}});
        desktop.statusBar().addIcon("clock");
        desktop.userDefaults().setObject("MenuBarHiderIntroShown", true);
        movePointer(below);
    }

    void start() {
        hider.start();
        desktop.statusBar().addIcon("mail");
        desktop.statusBar().addIcon("backup");
    }
    VirtualStatusItem& item(const std::string& name) {
        for (VirtualStatusItem* found : desktop.statusBar().items()) {
            if (found->autosaveName() == name) {
                return *found;
            }
        }
        throw ImpossibleAct("there is no item " + name);
    }
    // As it moves over other programs' windows, the menu bar among them.
    void movePointer(double y) {
        desktop.pointer().moveTo({700, y});
        desktop.eventMonitors().happenElsewhere(MouseMovedMask);
    }
    std::vector<std::string> seen() { return desktop.statusBar().seen(); }
    // The text of the only notice on the screen, or nothing.
    std::string notice() {
        const auto panels = desktop.panels().visible();
        if (panels.empty()) {
            return "";
        }
        const auto& content = panels.front()->rootLayer()->sublayers().back()->model().content;
        const auto* text = std::get_if<TextContent>(&content);
        return text != nullptr ? text->text : "";
    }

    static constexpr double inBar = 960;
    static constexpr double below = 500;

    VirtualDesktop desktop;
    Toasts toasts{desktop.services()};
    RBMenuBarHider hider{desktop.services(), toasts};
};

inline const std::vector<std::string> everything{"backup", "mail", separator, control, "clock"};
inline const std::vector<std::string> withoutHidden{separator, control, "clock"};

} // namespace rb
