#include "tests/session/HostFixture.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

// A panel of somebody else's with a tray: the hider's items live there and do nothing that could harm.
namespace rb {

namespace {

class PanelTest : public HostTest {
protected:
    Program& startPanel() {
        // With a tray and nothing else, at the bottom.
        const std::string config = session().folder() + "/tint2rc";
        writeFile(config, "panel_items = S\npanel_size = 100% 30\npanel_position = bottom center horizontal\n"
                          "systray_padding = 4 2 4\nsystray_sort = right2left\nsystray_icon_size = 22\n"
                          "rounded = 0\nborder_width = 0\nbackground_color = #e8e8ea 100\n"
                          "panel_background_id = 1\nsystray_monitor = primary\n");
        Program& panel = session().start({"tint2", "-c", config});
        EXPECT_TRUE(waitUntil([this] { return x().selectionOwner("_NET_SYSTEM_TRAY_S0") != 0; })) << panel.output();
        return panel;
    }
    // Our items in the panel, in the order of their creation: status item, chevron, dot.
    std::vector<WindowFacts> items() {
        std::vector<WindowFacts> found;
        for (const WindowFacts& facts : x().windows()) {
            if (facts.viewable && facts.title == "Rook Bay" && facts.width <= 48 && facts.y > 700) {
                found.push_back(facts);
            }
        }
        std::sort(found.begin(), found.end(),
                  [](const WindowFacts& a, const WindowFacts& b) { return a.window < b.window; });
        return found;
    }
    void clickOn(const WindowFacts& item, std::uint8_t button) {
        x().click(item.x + item.width / 2, item.y + item.height / 2, button);
    }
    bool hasNeighbour() {
        const auto icons = x().viewableOfClass("Parcellite");
        return std::any_of(icons.begin(), icons.end(), [](const WindowFacts& icon) { return icon.y > 700; });
    }
};

TEST_F(PanelTest, OurItemsLiveThereAndHideNothing) {
    settings(R"("MenuBarHiderDelay": 1, "MenuBarHiderCollapseOnLeave": true)");
    Program& panel = startPanel();
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return hasNeighbour(); }));
    launch();
    ASSERT_TRUE(waitUntil([this] { return items().size() == 3; })) << panel.output();
    EXPECT_TRUE(x().viewableOfClass(menuBarClass).empty());
    x().movePointer(500, 300);
    x().movePointer(510, 310);
    EXPECT_TRUE(staysTrue([this] { return items().size() == 3 && hasNeighbour(); }, 3))
        << "neither the delay nor the leaving pointer does anything";

    clickOn(items()[1], 3);
    ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuClass).empty(); }));
    std::filesystem::create_directories(SESSION_PICTURES);
    EXPECT_TRUE(saveScreenshot(x(), SESSION_PICTURES "/panel-menu.png"));
    x().tapKey(XKB_KEY_Escape);
    ASSERT_TRUE(waitUntil([this] { return x().viewableOfClass(menuClass).empty(); }));
    clickOn(items()[1], 1);
    EXPECT_TRUE(waitUntil([this] { return !x().viewableOfClass(panelClass).empty(); })) << "a notice says why not";
    EXPECT_TRUE(staysTrue([this] { return items().size() == 3 && hasNeighbour(); }, 0.5));

    // Without the panel, whose icons may have died with it, our own bar takes the items, and there icons can be hidden.
    panel.signal(SIGKILL);
    ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuBarClass).empty(); }));
    x().movePointer(middleOfChevron(), bar().y + 14);
    session().start({"cbatticon"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Cbatticon"); }));
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return !isShown("Cbatticon"); }));
}

} // namespace

} // namespace rb
