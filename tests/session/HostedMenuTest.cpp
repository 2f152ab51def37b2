#include "tests/session/HostFixture.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

// The menus of notifier items in our own bar, and items that behave badly, with a program made for it.
namespace rb {

namespace {

class HostedMenuTest : public HostTest {
protected:
    // Beside the dot.
    Program& startItem(const std::string& kind) {
        Program& program = session().start({NOTIFIER_PROGRAM, kind});
        EXPECT_TRUE(waitUntil([this] { return somethingAt(0); })) << kind;
        return program;
    }
    void clickItem(std::uint8_t button = 3) { x().click(edge(0) - hostedIcon / 2, bar().y + 14, button); }
    std::vector<WindowFacts> menus() { return x().viewableOfClass(menuClass); }
    [[nodiscard]] bool waitForMenus(std::size_t count) {
        return waitUntil([&] { return menus().size() == count; }, 5);
    }
    int largestHeight() {
        int height = 0;
        for (const WindowFacts& menu : menus()) {
            height = std::max(height, menu.height);
        }
        return height;
    }
    // The bar still does what it is there for.
    void expectWorkingBar() {
        session().start({"parcellite"});
        ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
        clickChevron();
        EXPECT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }, 3));
        clickChevron();
        EXPECT_TRUE(waitUntil([this] { return isShown("Parcellite"); }, 3));
    }
    // How often.
    static std::size_t told(const Program& program, const std::string& event) {
        const std::string output = program.output();
        const std::string line = "event " + event + "\n";
        std::size_t count = 0;
        for (std::size_t at = output.find(line); at != std::string::npos; at = output.find(line, at + 1)) {
            ++count;
        }
        return count;
    }
};

TEST_F(HostedMenuTest, SubmenusAreFilledWhenTheyOpenAndOpenMenusFollow) {
    startRookBay();
    const Program& program = startItem("lively");
    clickItem();
    ASSERT_TRUE(waitForMenus(1));
    const int before = menus().front().height;
    EXPECT_TRUE(waitUntil([&] { return told(program, "opened 0") == 1; }));
    EXPECT_TRUE(waitUntil([&] { return menus().size() == 1 && menus().front().height >= before + 3 * 26; }))
        << "three more lines";
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Right);
    ASSERT_TRUE(waitForMenus(2));
    const int oneLine = 26 + 2 * 5;
    EXPECT_TRUE(waitUntil([&] {
        const auto open = menus();
        return open.size() == 2 && std::all_of(open.begin(), open.end(),
                                               [&](const WindowFacts& menu) { return menu.height > 3 * oneLine; });
    })) << "four lines instead of one to wait with";
    std::filesystem::create_directories(SESSION_PICTURES);
    EXPECT_TRUE(saveScreenshot(x(), SESSION_PICTURES "/hosted-menu.png"));
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitUntil([&] {
        return told(program, "clicked 10") + told(program, "clicked 11") + told(program, "clicked 12") == 1;
    })) << program.output();
    EXPECT_TRUE(waitUntil([&] { return told(program, "closed 0") == 1; }));

    // The letter that it marks, and its shortcut.
    for (const std::uint32_t key : {XKB_KEY_q, XKB_KEY_Q}) {
        clickItem();
        ASSERT_TRUE(waitForMenus(1));
        if (key == XKB_KEY_q) {
            x().tapKey(XKB_KEY_q);
        } else {
            x().tapKey(XKB_KEY_q, {XKB_KEY_Control_L});
        }
        EXPECT_TRUE(waitForMenus(0));
    }
    EXPECT_TRUE(waitUntil([&] { return told(program, "clicked 7") == 2; })) << program.output();
}

TEST_F(HostedMenuTest, LongAndEndlessMenusOpen) {
    startRookBay();
    Program& many = startItem("many");
    clickItem();
    ASSERT_TRUE(waitForMenus(1));
    EXPECT_LE(largestHeight(), 800) << "it scrolls";
    x().tapKey(XKB_KEY_Escape);
    ASSERT_TRUE(waitForMenus(0));
    many.end();
    ASSERT_TRUE(waitUntil([this] { return !somethingAt(0); }));
    startItem("cycle");
    clickItem();
    ASSERT_TRUE(waitForMenus(1));
    std::size_t levels = 1;
    // A key that comes before a submenu is filled does nothing.
    const auto descend = [&] {
        for (int attempt = 0; attempt < 5; ++attempt) {
            x().tapKey(XKB_KEY_Down);
            x().tapKey(XKB_KEY_Right);
            if (waitUntil([&] { return menus().size() == levels + 1; }, 0.3)) {
                return true;
            }
        }
        return false;
    };
    while (descend()) {
        ++levels;
    }
    EXPECT_GE(levels, 3U);
    EXPECT_LE(levels, 9U);
    x().click(300, 600);
    ASSERT_TRUE(waitForMenus(0));
    expectWorkingBar();
}

TEST_F(HostedMenuTest, ItemsWithoutAnswersOrWithGarbageStayHarmless) {
    startRookBay();
    startItem("bare"); // a letter stands in for what it doesn't tell
    session().start({NOTIFIER_PROGRAM, "mute"});
    session().start({NOTIFIER_PROGRAM, "huge"});
    ASSERT_TRUE(waitUntil([this] { return somethingAt(1); }));
    EXPECT_FALSE(somethingAt(2)) << "one that never answers takes no place";
    Program& fleeting = session().start({NOTIFIER_PROGRAM, "fleeting"});
    ASSERT_TRUE(waitUntil([this] { return somethingAt(2); }));
    x().click(edge(2) - hostedIcon / 2, bar().y + 14);
    EXPECT_EQ(fleeting.waitForExit(), 0);
    EXPECT_TRUE(waitUntil([this] { return !somethingAt(2); }));
    session().start({NOTIFIER_PROGRAM, "mutemenu"});
    ASSERT_TRUE(waitUntil([this] { return somethingAt(2); }));
    x().click(edge(2) - hostedIcon / 2, bar().y + 14, 3);
    x().click(edge(2) - hostedIcon / 2, bar().y + 14, 3);
    EXPECT_TRUE(staysTrue([this] { return menus().empty(); }, 0.5));
    x().click(middleOfChevron(), bar().y + 14, 3);
    EXPECT_TRUE(waitForMenus(1)) << "our own menu opens meanwhile";
    x().tapKey(XKB_KEY_Escape);
    ASSERT_TRUE(waitForMenus(0));
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }, 3));
}

TEST_F(HostedMenuTest, AnOwnerThatDiesClosesItsMenu) {
    startRookBay();
    Program& program = startItem("lively");
    clickItem();
    ASSERT_TRUE(waitForMenus(1));
    program.signal(SIGKILL);
    EXPECT_TRUE(waitForMenus(0));
    EXPECT_TRUE(waitUntil([this] { return !somethingAt(0); }));
    expectWorkingBar();
}

} // namespace

} // namespace rb
