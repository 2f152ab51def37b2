#pragma once

#include "app/Toasts.h"
#include "clothesline/Clothesline.h"
#include "desktops/virtual/Desktop.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace rb {

// A clothesline on a virtual desktop with one screen of 1512 × 982 points and a menu bar of 38.
class LineTest : public testing::Test {
protected:
    LineTest() {
        desktop.screens().set({{.id = 1, .frame = {0, 0, 1512, 982}, .visibleFrame = {0, 0, 1512, 944}}});
        desktop.pointer().moveTo({700, 300});
        line = std::make_unique<RBClothesline>(desktop.services(), toasts);
    }

    // Documents a, b, c … in the home folder, hung without motion.
    std::vector<RBPegItemRef> hang(std::size_t count) {
        std::vector<RBPegItemRef> hung;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string path = "/Users/rb/" + std::string(1, static_cast<char>('a' + i));
            desktop.files().addDocument(path);
            hung.push_back(line->hangURL(path, {.quietly = true}));
        }
        return hung;
    }
    void reveal() {
        line->setPinned(true);
        line->setRevealed(true);
        desktop.advance(1);
    }
    std::vector<std::string> paths() const {
        std::vector<std::string> found;
        for (const auto& item : line->items()) {
            found.push_back(item->path);
        }
        return found;
    }
    std::vector<std::string> savedPaths() {
        return desktop.userDefaults()
            .stringArrayForKey("ClotheslinePaths")
            .value_or(std::vector<std::string>{"absent"});
    }
    // Where the line is drawn, 0 in view and 222 hidden.
    double slideOffset() {
        const auto visible = desktop.panels().visible();
        return visible.empty()
                   ? 222
                   : visible.front()->rootLayer()->sublayers().back()->presentation().transform.translation.y;
    }

    VirtualDesktop desktop;
    Toasts toasts{desktop.services()};
    std::unique_ptr<RBClothesline> line;
};

} // namespace rb
