#pragma once

#include "app/AppDelegate.h"
#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Desktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace rb {

inline constexpr const char* settingsTitle = "Rook Bay 快捷键设置";
inline constexpr const char* hotKeyRefused = "这个快捷键无法使用";

// What is saved of the lock's key alone; other features save when they start.
inline PropertyDictionary savedHotKey(VirtualDesktop& desktop) {
    PropertyDictionary saved = desktop.userDefaults().stored();
    std::erase_if(saved, [](const auto& entry) { return !entry.first.starts_with("HotKey"); });
    return saved;
}

// The product on a virtual desktop. Prepare the desktop, launch, act as the user.
class AppTest : public testing::Test {
protected:
    // Not the first run: the hider has introduced itself, and the takeover of screenshots was offered.
    AppTest() {
        desktop_.userDefaults().setObject("MenuBarHiderIntroShown", true);
        desktop_.userDefaults().setObject("ClotheslineInboxOffered", true);
    }
    ~AppTest() override { desktop_.application().terminate(); }

    AppDelegate& launch() {
        app_ = std::make_unique<AppDelegate>(desktop_.services());
        desktop_.application().run(*app_);
        return *app_;
    }
    void quit() {
        desktop_.application().terminate();
        app_.reset();
    }
    // Whether the Screens and connections window is open; it is closed again.
    bool displaysWereShown() {
        for (VirtualWindow* window : std::vector(desktop_.windows().visible())) {
            if (window->spec().title == "Rook Bay · 屏幕与连接") {
                window->close();
                return true;
            }
        }
        return false;
    }
    std::string statusLine() { return desktop_.statusMenu().items().at(1)->title; }
    std::string toolTip() { return desktop_.statusBar().items().at(0)->toolTip(); }

    VirtualDesktop desktop_;
    std::unique_ptr<AppDelegate> app_;
};

} // namespace rb
