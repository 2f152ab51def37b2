#pragma once

#include "tests/clothesline/LineFixture.h"

#include "desktops/virtual/Menus.h"

#include <gmock/gmock.h>

namespace rb {

// The line started and down, with a hand over it.
class HandsTest : public LineTest {
protected:
    HandsTest() {
        line->start();
        line->beginPreviewPanelControl(desktop.previewPanel());
    }
    ~HandsTest() override { line->endPreviewPanelControl(desktop.previewPanel()); }

    RBPegItemRef hangFolder(const std::string& path) {
        desktop.files().addFolder(path);
        return line->hangURL(path, {.quietly = true});
    }
    void addDocuments(const std::vector<std::string>& files) {
        for (const std::string& file : files) {
            desktop.files().addDocument(file);
        }
    }
    // Reveals the line and brings the pointer onto the card, which then takes the mouse.
    Point over(const RBPegItemRef& item, Point fromMiddle = {}) {
        if (!line->revealed()) {
            reveal();
        }
        const Rect frame = item->peg.frame.offset(line->panelFrame().x, line->panelFrame().y);
        const Point place{frame.midX() + fromMiddle.x, frame.midY() + fromMiddle.y};
        desktop.pointer().moveTo(place);
        desktop.advance(0.1);
        return place;
    }
    void click(const RBPegItemRef& item) { hand().click(over(item)); }
    VirtualHand& hand() { return desktop.hand(); }
    bool pillShows(const RBPegItemRef& item) {
        desktop.advance(0.3);
        return item->pill->presentation().opacity > 0.9;
    }
    std::vector<std::string> contextMenuTitles() {
        std::vector<std::string> titles;
        for (const auto& item : desktop.panels().contextMenu()->items()) {
            titles.push_back(item->separator ? "-" : item->title);
        }
        return titles;
    }
    void choose(const RBPegItemRef& item, const std::string& title) {
        hand().pressRight(over(item));
        ASSERT_NE(desktop.panels().contextMenu(), nullptr);
        const auto menu = desktop.panels().contextMenu();
        desktop.panels().closeContextMenu();
        menus::choose(*menu, title);
    }
};

} // namespace rb
