#pragma once

#include "app/Toasts.h"
#include "clipboard/ClipboardHistory.h"
#include "desktops/virtual/Bitmap.h"
#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Desktop.h"
#include "desktops/virtual/Menus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// The history alone on a virtual desktop, recording; the test copies and opens the menu.
class ClipboardHistoryTest : public testing::Test {
protected:
    ClipboardHistoryTest() { start(); }

    RBClipboardHistory& start() {
        history_.reset();
        history_ = std::make_unique<RBClipboardHistory>(desktop_.services(), toasts_);
        history_->start();
        return *history_;
    }
    // Copies, and lets the next look happen.
    void copy(VirtualPasteboard::Copied copied) {
        desktop_.pasteboard().copy(std::move(copied));
        desktop_.advance(0.5);
    }
    void copyText(const std::string& text) { copy({.text = text}); }
    static Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

    Menu& menu() {
        menus::open(*history_->menu());
        return *history_->menu();
    }
    // Of the entries, newest first.
    std::vector<std::string> titles() {
        std::vector<std::string> found;
        for (const auto& item : menu().items()) {
            if (item->separator) {
                break;
            }
            if (!item->alternate) {
                found.push_back(item->title);
            }
        }
        return found;
    }
    // The entry at that place, counted from 0.
    MenuItem& entry(std::size_t place) { return *menu().items().at(2 * place); }
    MenuItem& last(std::size_t fromEnd) {
        const auto& items = menu().items();
        return *items.at(items.size() - 1 - fromEnd);
    }
    struct Notice {
        std::string text;
        std::string symbol;
        std::optional<Color> tint;
        friend bool operator==(const Notice&, const Notice&) = default;
    };
    // The newest notice on the screen.
    std::optional<Notice> notice() {
        const auto visible = desktop_.panels().visible();
        if (visible.empty()) {
            return std::nullopt;
        }
        const auto& parts = visible.back()->rootLayer()->sublayers();
        const auto symbol = std::get<Symbol>(parts.at(0)->model().contents);
        return Notice{std::get<TextContent>(parts.at(1)->model().content).text, symbol.name, symbol.tint};
    }
    Notice expected(const std::string& text, const std::string& symbol, SystemColor tint) {
        return {text, symbol, desktop_.appearance().color(tint)};
    }

    VirtualDesktop desktop_;
    Toasts toasts_{desktop_.services()};
    std::unique_ptr<RBClipboardHistory> history_;
};

} // namespace rb
