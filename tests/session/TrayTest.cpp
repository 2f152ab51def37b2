#include "tests/session/SessionTest.h"
#include "tests/session/frame/TrayManager.h"

#include <csignal>
#include <optional>
#include <sstream>
#include <xkbcommon/xkbcommon-keysyms.h>

// Where the status item lives: with another desktop's tray or notifier, or in our own menu bar.
namespace rb {

namespace {

class TrayTest : public SessionTest {
protected:
    TrayTest() { useCountingLocker(); }

    Program& startWatcher() {
        Program& watcher = session().start({NOTIFIER_HOST, "watch"});
        EXPECT_TRUE(waitUntil([&] { return watcher.output().find("watching") != std::string::npos; }));
        return watcher;
    }
    // Bus name and path of the item that registered first, the program's own.
    static std::optional<std::pair<std::string, std::string>> registered(const Program& watcher) {
        std::istringstream lines(watcher.output());
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            std::string what;
            std::string service;
            std::string path;
            if (words >> what >> service >> path && what == "registered") {
                return std::pair(service, path);
            }
        }
        return std::nullopt;
    }
    std::string ask(const std::string& what, const Program& watcher, const std::string& label = "") {
        const auto item = registered(watcher);
        if (!item) {
            return "not registered";
        }
        std::vector<std::string> command{NOTIFIER_HOST, what, item->first, item->second};
        if (!label.empty()) {
            command.push_back(label);
        }
        Program& host = session().start(command);
        EXPECT_EQ(host.waitForExit(), 0) << host.output();
        return host.output();
    }
    bool hasBar() { return !x().viewableOfClass(menuBarClass).empty(); }
};

TEST_F(TrayTest, AnXEmbedTrayTakesTheItem) {
    auto tray = std::make_unique<TrayManager>(session().display());
    launch();
    ASSERT_TRUE(waitUntil([&] { return tray->icons().size() == 3; }));
    EXPECT_FALSE(hasBar());
    const auto icon = x().facts(tray->icons().front());
    ASSERT_TRUE(icon);
    EXPECT_TRUE(icon->viewable);
    ASSERT_TRUE(waitUntil([this] { return x().isKeyHeld(XKB_KEY_F13); }));
    x().click(icon->x + icon->width / 2, icon->y + icon->height / 2);
    ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuClass).empty(); }));
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitForLockings(1));

    // The tray crashes: the item moves to our own bar; a new tray takes it again.
    tray.reset();
    EXPECT_TRUE(waitUntil([this] { return hasBar(); }));
    tray = std::make_unique<TrayManager>(session().display());
    EXPECT_TRUE(waitUntil([&] { return tray->icons().size() == 3 && !hasBar(); }));
}

TEST_F(TrayTest, ANotifierShowsItemAndMenu) {
    Program& watcher = startWatcher();
    Program& rookBay = launch();
    ASSERT_TRUE(waitUntil([&] { return registered(watcher).has_value(); }));
    ASSERT_TRUE(waitUntil([this] { return x().isKeyHeld(XKB_KEY_F13); }));
    EXPECT_FALSE(hasBar());
    const std::string facts = ask("facts", watcher);
    EXPECT_THAT(facts, testing::HasSubstr("ToolTip=Rook Bay：F13 锁屏"));
    EXPECT_THAT(facts, testing::HasSubstr("Status=Active"));
    EXPECT_THAT(facts, testing::Not(testing::HasSubstr("pictures=0"))) << "no icon theme has our symbol";
    EXPECT_EQ(ask("menu", watcher), "立即锁屏并关闭显示器\n"
                                    "- \u2002\u2002当前快捷键：F13\n"
                                    "--\n"
                                    "剪贴板历史\n"
                                    "晾衣绳\n"
                                    "菜单栏图标\n"
                                    "新建 TXT…\n"
                                    "--\n"
                                    "屏幕与连接…\n"
                                    "设置快捷键…\n"
                                    "--\n"
                                    "退出 Rook Bay\n");
    ask("choose", watcher, "立即锁屏并关闭显示器");
    EXPECT_TRUE(waitForLockings(1));
    ask("choose", watcher, "设置快捷键…");
    EXPECT_TRUE(waitUntil([this] { return x().viewableTitled(settingsTitle).has_value(); }));
    ask("choose", watcher, "退出 Rook Bay");
    EXPECT_EQ(rookBay.waitForExit(2), 0);
    EXPECT_TRUE(waitUntil([&] { return watcher.output().find("gone") != std::string::npos; }));
}

// GTK's panels ask for several submenus at once and fetch only what they are told of by the signal.
TEST_F(TrayTest, ASubmenuThatFillsAsItOpensIsToldOf) {
    const Program& watcher = startWatcher();
    launch();
    ASSERT_TRUE(waitUntil([&] { return registered(watcher).has_value(); }));
    const auto [service, path] = *registered(watcher);
    const auto call = [&, service = service](const std::string& method, const std::vector<std::string>& arguments) {
        std::vector<std::string> command{"gdbus",    "call",     "--session",
                                         "--dest",   service,    "--object-path",
                                         "/MenuBar", "--method", "com.canonical.dbusmenu." + method};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Program& program = session().start(command);
        EXPECT_EQ(program.waitForExit(), 0) << program.output();
        return program.output();
    };
    const std::string menu = call("GetLayout", {"0", "--", "-1", "[]"});
    const Program& listener =
        session().start({"gdbus", "monitor", "--session", "--dest", service, "--object-path", "/MenuBar"});
    ASSERT_TRUE(waitUntil([&] { return listener.output().find("is owned by") != std::string::npos; }));
    constexpr const char* history = "[4]";
    EXPECT_EQ(call("AboutToShowGroup", {history}), "([4], @ai [])\n") << menu;
    EXPECT_TRUE(waitUntil([&] { return listener.output().find("LayoutUpdated") != std::string::npos; }))
        << listener.output();
    EXPECT_THAT(call("GetLayout", {"4", "--", "-1", "[]"}), testing::HasSubstr("还没有复制记录"));
}

TEST_F(TrayTest, TheItemMovesBetweenNotifierTrayAndOwnBar) {
    startRookBay();
    Program& watcher = startWatcher();
    ASSERT_TRUE(waitUntil([&] { return registered(watcher) && !hasBar(); })) << "a notifier is preferred";
    watcher.signal(SIGKILL);
    EXPECT_TRUE(waitUntil([this] { return hasBar(); }));
    {
        TrayManager tray(session().display());
        EXPECT_TRUE(waitUntil([&] { return tray.icons().size() == 3 && !hasBar(); }));
        Program& second = startWatcher();
        EXPECT_TRUE(waitUntil([&] { return registered(second) && tray.icons().empty(); }));
        second.signal(SIGKILL);
        EXPECT_TRUE(waitUntil([&] { return tray.icons().size() == 3; })) << "back in the tray that is still there";
    }
    EXPECT_TRUE(waitUntil([this] { return hasBar(); }));
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_Escape);
}

} // namespace

} // namespace rb
