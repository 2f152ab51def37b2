#include "app/DefaultsKeys.h"
#include "tests/app/AppFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* folder = "/Users/rb/文稿";
constexpr const char* desktopFolder = "/Users/rb/Desktop";

class NewTextFileTest : public AppTest {
protected:
    NewTextFileTest() {
        desktop_.files().addFolder(folder);
        desktop_.files().addFolder(desktopFolder);
        desktop_.frontFolder().setAnswer({.path = folder});
    }
    VirtualSavePanel& choose() {
        desktop_.chooseMenuItem("新建 TXT…");
        return panel();
    }
    VirtualSavePanel& panel() { return desktop_.savePanels().current(); }
    std::size_t panels() { return desktop_.savePanels().open().size(); }
    std::optional<std::string> lastDirectory() {
        return desktop_.userDefaults().stringForKey(DefaultsKey::TextFileLastDirectory);
    }
    static std::string in(const std::string& place, const std::string& name) { return place + "/" + name; }
};

TEST_F(NewTextFileTest, AFileAppearsWhereTheUserLooksAndOpens) {
    launch();
    VirtualSavePanel& shown = choose();
    EXPECT_EQ(shown.spec(), (SavePanelSpec{.title = "新建 TXT",
                                           .prompt = "创建",
                                           .directory = folder,
                                           .name = "新建文本.txt",
                                           .extension = "txt"}));
    EXPECT_TRUE(desktop_.application().isActive());
    const std::string path = in(folder, "新建文本.txt");
    EXPECT_FALSE(desktop_.files().facts(path).exists) << "nothing before the user confirms";
    EXPECT_TRUE(shown.confirm());
    EXPECT_EQ(panels(), 0U);
    EXPECT_TRUE(desktop_.files().facts(path).exists);
    EXPECT_EQ(lastDirectory(), folder);
    EXPECT_THAT(desktop_.workspace().edited(), ElementsAre(path));
    desktop_.advance(1);
    EXPECT_THAT(desktop_.workspace().revealed(), IsEmpty());
    EXPECT_THAT(desktop_.alerts().shown(), IsEmpty());
}

TEST_F(NewTextFileTest, TheProposedNameIsFree) {
    launch();
    const auto proposed = [this] {
        const std::string name = choose().spec().name;
        panel().cancel();
        return name;
    };
    desktop_.files().addDanglingLink(in(folder, "新建文本.txt"));
    EXPECT_EQ(proposed(), "新建文本 2.txt") << "a link counts, wherever it leads";
    desktop_.files().addDocument(in(folder, "新建文本 2.txt"));
    desktop_.files().addDocument(in(folder, "新建文本 4.txt"));
    EXPECT_EQ(proposed(), "新建文本 3.txt");
    for (int number = 3; number <= 9999; ++number) {
        desktop_.files().addFolder(in(folder, "新建文本 " + std::to_string(number) + ".txt"));
    }
    EXPECT_EQ(proposed(), "00000000-0000-4000-8000-000000000001.txt");
    EXPECT_EQ(lastDirectory(), std::nullopt) << "a cancelled panel leaves nothing";
}

TEST_F(NewTextFileTest, OnePanelAtATime) {
    launch();
    choose();
    EXPECT_EQ(panel().broughtForward(), 0);
    desktop_.application().deactivate();
    choose();
    app_->applicationNewTextFile("/Users/rb/Desktop");
    EXPECT_EQ(panels(), 1U);
    EXPECT_EQ(panel().broughtForward(), 2);
    EXPECT_TRUE(desktop_.application().isActive());
    EXPECT_EQ(desktop_.frontFolder().asked(), 1);
    panel().cancel();
    EXPECT_EQ(choose().broughtForward(), 0) << "a new one";
    quit();
    EXPECT_EQ(panels(), 0U);
}

TEST_F(NewTextFileTest, WithoutAFrontFolderTheLastOneServesThenTheDesktop) {
    launch();
    desktop_.frontFolder().setAnswer({.errorCode = -600, .errorText = "Finder isn't running"});
    EXPECT_EQ(choose().spec().directory, desktopFolder);
    panel().cancel();
    desktop_.files().addFolder("/Users/rb/旧");
    desktop_.userDefaults().setObject(DefaultsKey::TextFileLastDirectory, "/Users/rb/旧");
    EXPECT_EQ(choose().spec().directory, "/Users/rb/旧");
    panel().cancel();
    desktop_.files().addDocument("/Users/rb/旧");
    EXPECT_EQ(choose().spec().directory, desktopFolder) << "it must be a folder";
    panel().cancel();
    EXPECT_THAT(desktop_.alerts().shown(), IsEmpty()) << "all of it silently";
}

TEST_F(NewTextFileTest, AMissingPermissionIsExplained) {
    launch();
    desktop_.frontFolder().setAnswer({.errorCode = -1743});
    desktop_.chooseMenuItem("新建 TXT…");
    EXPECT_EQ(panels(), 0U);
    const auto alert = desktop_.alerts().current();
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->messageText, "需要允许 Rook Bay 控制 Finder");
    EXPECT_EQ(alert->informativeText, "Rook Bay 需要读取 Finder 当前打开的文件夹，才能在那里新建 TXT。请在“系统设置 → "
                                      "隐私与安全性 → 自动化”中，为 Rook Bay 打开“Finder”。");
    EXPECT_THAT(alert->buttons, ElementsAre(AlertButton{.title = "打开系统设置"}, AlertButton{.title = "取消"}));
    desktop_.alerts().answerNext(1);
    EXPECT_THAT(desktop_.workspace().urls(), IsEmpty());
    desktop_.chooseMenuItem("新建 TXT…");
    desktop_.alerts().answerNext(0);
    EXPECT_THAT(desktop_.workspace().urls(),
                ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_Automation"));
    desktop_.frontFolder().setAnswer({.path = folder});
    EXPECT_EQ(choose().spec().directory, folder) << "allowed meanwhile";
}

TEST_F(NewTextFileTest, ATakenNameIsRefusedAndNothingIsEverReplaced) {
    launch();
    VirtualSavePanel& shown = choose();
    desktop_.files().addDocument(in(folder, "日记.txt"));
    desktop_.files().addDanglingLink(in(folder, "链接.txt"));
    for (const char* name : {"日记.txt", "日记", "链接.txt"}) {
        shown.typeName(name);
        EXPECT_FALSE(shown.confirm());
        EXPECT_EQ(shown.refusal(), "已有同名文件，请换一个名称。");
        EXPECT_EQ(panels(), 1U) << "the panel stays open";
    }
    shown.goTo(desktopFolder);
    EXPECT_TRUE(shown.confirm());
    EXPECT_TRUE(desktop_.files().facts(in(desktopFolder, "链接.txt")).exists);
    EXPECT_EQ(lastDirectory(), desktopFolder);
}

TEST_F(NewTextFileTest, WhatCannotBeMadeIsTold) {
    launch();
    for (const std::string& reason : {std::string("磁盘空间不足。"), std::string()}) {
        desktop_.files().refuseNewFiles(reason);
        EXPECT_TRUE(choose().confirm());
        const auto alert = desktop_.alerts().current();
        ASSERT_TRUE(alert);
        EXPECT_EQ(alert->messageText, "无法创建文本文件");
        EXPECT_EQ(alert->informativeText, reason.empty() ? "请检查保存位置和文件名。" : reason);
        EXPECT_TRUE(alert->buttons.empty());
        desktop_.alerts().closeCurrent();
    }
    EXPECT_EQ(lastDirectory(), std::nullopt);
    EXPECT_THAT(desktop_.workspace().edited(), IsEmpty());
    // Somebody else was quicker between the panel's check and ours.
    desktop_.files().refuseNewFiles(std::nullopt);
    VirtualSavePanel& shown = choose();
    desktop_.files().refuseNewFiles("已有同名文件，请换一个名称。");
    shown.confirm();
    EXPECT_EQ(desktop_.alerts().current()->informativeText, "已有同名文件，请换一个名称。");
}

TEST_F(NewTextFileTest, WithoutAnEditorTheFileIsShown) {
    launch();
    desktop_.workspace().setTakesFiles(false);
    choose().confirm();
    desktop_.advance(0);
    EXPECT_THAT(desktop_.workspace().revealed(), ElementsAre(in(folder, "新建文本.txt")));
}

TEST_F(NewTextFileTest, ASlowFileManagerIsAskedOnce) {
    launch();
    desktop_.frontFolder().setSlow(true);
    desktop_.chooseMenuItem("新建 TXT…");
    desktop_.chooseMenuItem("新建 TXT…");
    EXPECT_EQ(desktop_.frontFolder().asked(), 1);
    EXPECT_EQ(panels(), 0U);
    // A folder that is named outright doesn't wait, and the late answer is no longer wanted.
    app_->applicationNewTextFile(desktopFolder);
    EXPECT_EQ(panel().spec().directory, desktopFolder);
    desktop_.frontFolder().answerWaiting();
    EXPECT_EQ(panels(), 1U);
    EXPECT_EQ(panel().broughtForward(), 0);
    panel().cancel();
    desktop_.chooseMenuItem("新建 TXT…");
    quit();
    desktop_.frontFolder().answerWaiting();
    EXPECT_EQ(panels(), 0U) << "the program is gone";
}

TEST_F(NewTextFileTest, AFolderNamedFromOutsideMustBeThere) {
    AppDelegate& app = launch();
    app.applicationNewTextFile("/Users/rb/nowhere");
    EXPECT_EQ(panel().spec().directory, desktopFolder);
    panel().cancel();
    app.applicationNewTextFile(std::nullopt);
    EXPECT_EQ(panel().spec().directory, folder) << "where the user looks";
}

TEST_F(NewTextFileTest, TheQuickActionIsInstalledByItsVersion) {
    VirtualQuickActions& actions = desktop_.quickActions();
    actions.setBundledVersion("2.0");
    VirtualQuickActions::Place& missing = actions.place("missing");
    VirtualQuickActions::Place& current = actions.place("current");
    current = {.installed = true, .version = "2.0"};
    VirtualQuickActions::Place& old = actions.place("old");
    old = {.installed = true, .version = "1.9"};
    VirtualQuickActions::Place& silent = actions.place("silent");
    silent = {.installed = true};
    VirtualQuickActions::Place& locked = actions.place("locked");
    locked = {.installed = true, .version = "1.0", .refusal = "read-only"};
    VirtualQuickActions::Place& full = actions.place("full");
    full = {.refusal = "no space"};
    launch();
    EXPECT_EQ(missing.writes, 1);
    EXPECT_EQ(current.writes, 0) << "the same version is left alone";
    EXPECT_EQ(old.writes, 1);
    EXPECT_EQ(silent.writes, 1);
    EXPECT_EQ(locked.version, "1.0");
    EXPECT_EQ(full.writes, 0);
    EXPECT_EQ(actions.refreshes(), 1);
    EXPECT_THAT(desktop_.log().lines(),
                testing::IsSupersetOf({"Rook Bay: TXT Quick Action update failed: read-only",
                                       "Rook Bay: TXT Quick Action installation failed: no space"}));
    EXPECT_THAT(desktop_.alerts().shown(), IsEmpty());
}

TEST_F(NewTextFileTest, TheQuickActionIsRemovedWhereverItIs) {
    VirtualQuickActions& actions = desktop_.quickActions();
    VirtualQuickActions::Place& one = actions.place("one");
    VirtualQuickActions::Place& locked = actions.place("locked");
    NewTextFile command(desktop_.services());
    command.removeTextQuickAction();
    EXPECT_EQ(actions.refreshes(), 0) << "there was none";
    command.installTextQuickAction();
    locked.refusal = "read-only";
    command.removeTextQuickAction();
    EXPECT_FALSE(one.installed);
    EXPECT_TRUE(locked.installed);
    EXPECT_EQ(actions.refreshes(), 2);
    // A program without the resource changes nothing.
    actions.setBundledVersion(std::nullopt);
    command.installTextQuickAction();
    EXPECT_FALSE(one.installed);
}

} // namespace

} // namespace rb
