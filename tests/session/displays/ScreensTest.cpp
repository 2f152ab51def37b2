#include "desktops/linux/AlertDialog.h"
#include "desktops/linux/Desktop.h"
#include "desktops/linux/Log.h"
#include "desktops/linux/SingleInstance.h"
#include "desktops/linux/Window.h"
#include "displays/DisplayController.h"
#include "tests/helpers/EdidBlock.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>

#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xcb/randr.h>
#include <xkbcommon/xkbcommon-keysyms.h>

// The Screens and connections window with real helpers and with helpers that misbehave, on an X server with several
// outputs. The window runs in this process, so that its texts can be read; the user's clicks and keys are real.
namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr const char* noChannel = "未识别到硬件控制通道；可能是虚拟屏幕或连接不支持。";
constexpr const char* question = "保留这个显示模式吗？";
constexpr const char* incomplete = "显示模式未完成";

class ScreensTest : public testing::Test {
protected:
    ScreensTest() {
        for (const auto& [name, value] : session_.environment) {
            ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): before there are threads
        }
        for (const char* name : {"CableHelper", "DisplayHelper", "ResolutionHelper"}) {
            fs::remove(helpers_ / name);
            fs::create_symlink(fs::path(HELPERS_FOLDER) / name, helpers_ / name);
        }
        desktop_ = std::make_unique<LinuxDesktop>(std::vector<std::string>{}, XConnection::open(), instance_, log_);
        controller_ =
            std::make_unique<DisplayController>(desktop_->services(), DisplayController::QuickActions{[] {}, [] {}});
    }
    void TearDown() override {
        if (HasFailure()) {
            saveScreenshot(session_.x(), picture("failed"));
        }
        controller_.reset();
    }
    static std::string picture(const std::string& name) {
        fs::create_directories(SESSION_PICTURES);
        return std::string(SESSION_PICTURES) + "/screens-" + name + ".png";
    }

    static void live(double seconds) {
        QEventLoop loop;
        QTimer::singleShot(std::max(1, static_cast<int>(seconds * 1000)), Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
    }
    template <typename Condition>
    [[nodiscard]] static bool until(const Condition& condition, double limit = 10) {
        return waitUntil(
            [&] {
                live(0.005);
                return condition();
            },
            limit);
    }
    // Puts a shell script in a helper's place.
    void install(const std::string& name, const std::string& script) {
        fs::remove(helpers_ / name);
        writeFile(helpers_ / name, "#!/bin/sh\n" + script + "\n");
        fs::permissions(helpers_ / name, fs::perms::owner_all);
    }

    DisplayController& controller() { return *controller_; }
    [[nodiscard]] bool opened(double limit = 10) {
        controller_->show();
        // The session's start may still be news that drops the first pass.
        return until([this] { return isQuiet(); }, limit);
    }
    bool isQuiet() const { return !controller_->busy() && !controller_->refreshPending(); }
    // A pass by hand, after whatever is under way or about to begin.
    [[nodiscard]] bool refreshed(double limit = 20) {
        const bool quiet = until([this] { return isQuiet(); }, limit);
        controller_->refresh();
        return quiet && until([this] { return !controller_->busy(); }, limit);
    }
    std::string status(std::size_t row) { return controller_->rows().at(row).status.value_or("(none)"); }
    std::string resolution(std::size_t row = 0) { return controller_->rows().at(row).resolution.value_or("(none)"); }

    QWidget& topLevel() { return dynamic_cast<LinuxWindow&>(const_cast<Window&>(*controller_->window())).topLevel(); }
    AlertDialog* sheet() { return topLevel().findChild<AlertDialog*>(); }
    // The texts of the sheet that is on the screen.
    std::string sheetText() {
        std::string all;
        if (AlertDialog* dialog = sheet(); dialog && dialog->isVisible()) {
            for (const QLabel* label : dialog->findChildren<QLabel*>()) {
                all += label->text().toStdString() + "\n";
            }
        }
        return all;
    }
    void click(const QWidget& widget) {
        const auto window = static_cast<xcb_window_t>(widget.window()->winId());
        EXPECT_TRUE(until([&] {
            const auto facts = session_.x().facts(window);
            const QPoint place = widget.window()->mapToGlobal(QPoint(0, 0));
            return facts && facts->viewable && facts->x == place.x() && facts->y == place.y();
        }));
        const QPoint middle = widget.mapToGlobal(widget.rect().center());
        session_.x().click(middle.x(), middle.y());
        live(0.05);
    }
    void clickButton(const QWidget& parent, const QString& title) {
        for (const QAbstractButton* button : parent.findChildren<QAbstractButton*>()) {
            if (button->text() == title && button->isVisible()) {
                EXPECT_TRUE(button->isEnabled()) << title.toStdString();
                click(*button);
                return;
            }
        }
        FAIL() << "no button " << title.toStdString();
    }
    // Chooses the first item that begins so in the picker of the first display, with the mouse and the keyboard.
    void choose(const QString& label) {
        auto* picker = topLevel().findChild<QComboBox*>();
        ASSERT_TRUE(picker);
        const int wanted = picker->findText(label, Qt::MatchStartsWith);
        ASSERT_GE(wanted, 0) << label.toStdString();
        click(*picker);
        for (int steps = wanted - picker->currentIndex(); steps != 0; steps += steps > 0 ? -1 : 1) {
            session_.x().tapKey(steps > 0 ? XKB_KEY_Down : XKB_KEY_Up);
        }
        live(0.2);
        session_.x().tapKey(XKB_KEY_Return);
        EXPECT_TRUE(until([&] { return picker->currentIndex() == wanted; }));
    }
    void begin() {
        choose("1280 × 720");
        clickButton(topLevel(), "试用模式");
    }
    void xrandr(const std::vector<std::string>& arguments) {
        std::vector<std::string> command{"xrandr"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Program& program = session_.start(command);
        EXPECT_EQ(program.waitForExit(), 0) << program.output();
    }
    void secondOutput() {
        xrandr({"--addmode", "DUMMY1", "1280x720"});
        xrandr({"--output", "DUMMY1", "--mode", "1280x720", "--right-of", "DUMMY0"});
    }
    // The mode that the X server shows, whatever the program thinks.
    std::string serversMode() {
        Program& program = session_.start({"xrandr", "--listactivemonitors"});
        program.waitForExit();
        return program.output();
    }
    [[nodiscard]] bool serverShows(const std::string& geometry, double limit = 5) {
        return until([&] { return serversMode().find(geometry) != std::string::npos; }, limit);
    }

    const fs::path helpers_ = std::getenv("ROOKBAY_HELPERS_TEST"); // NOLINT(concurrency-mt-unsafe)
    Session session_{{.dummyOutputs = true}};
    LinuxLog log_;
    SingleInstance instance_{log_}; // never claimed
    std::unique_ptr<LinuxDesktop> desktop_;
    std::unique_ptr<DisplayController> controller_;
};

TEST_F(ScreensTest, OutputsAreListedAndTheRowsFollowThem) {
    ASSERT_TRUE(opened());
    ASSERT_EQ(controller().rows().size(), 1U);
    const DisplayRow& row = controller().rows()[0];
    EXPECT_EQ(row.name, "DUMMY0");
    EXPECT_TRUE(row.main);
    EXPECT_EQ(resolution(), "1920 × 1080");
    EXPECT_GE(row.modes.size(), 20U);
    EXPECT_EQ(status(0), noChannel);
    EXPECT_EQ(controller().connections().error, std::nullopt);
    EXPECT_TRUE(until([this] { return !controller().refreshPending(); }));

    secondOutput();
    const double changed = monotonicNow();
    ASSERT_TRUE(until([this] { return controller().rows().size() == 2; }));
    const double followed = monotonicNow() - changed;
    EXPECT_GE(followed, 1.3) << "1.5 s after the last change";
    EXPECT_LE(followed, 4);
    EXPECT_EQ(controller().rows()[1].name, "DUMMY1");
    EXPECT_EQ(resolution(1), "1280 × 720");
    xrandr({"--output", "DUMMY1", "--off"});
    EXPECT_TRUE(until([this] { return controller().rows().size() == 1; }));
}

TEST_F(ScreensTest, AnEdidNamesADisplay) {
    ASSERT_TRUE(opened());
    const std::uint32_t output = controller().rows()[0].id;
    const auto block = edidBlock("DELL U2723QE");
    xcb_connection_t* x = session_.x().connection();
    const char* const property = "EDID";
    const auto atom = ownReply(xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, 4, property), nullptr));
    xcb_randr_change_output_property(x, output, atom->atom, XCB_ATOM_INTEGER, 8, XCB_PROP_MODE_REPLACE,
                                     static_cast<std::uint32_t>(block.size()), block.data());
    session_.x().sync();
    ASSERT_TRUE(refreshed());
    EXPECT_EQ(controller().rows()[0].name, "DELL U2723QE");
    EXPECT_EQ(controller().rows()[0].modeIdentity, std::to_string(output) + ":4268:16857:77");
    begin(); // the helper knows the display by the same name
    EXPECT_TRUE(until([this] { return sheetText().find(question) != std::string::npos; })) << sheetText();
}

TEST_F(ScreensTest, ATrialIsAskedAboutAndKept) {
    ASSERT_TRUE(opened());
    begin();
    ASSERT_TRUE(until([this] { return sheetText().find(question) != std::string::npos; })) << sheetText();
    EXPECT_THAT(sheetText(), testing::HasSubstr("1280 × 720 · 普通 · 60.00 Hz\n请确认画面正常。"));
    EXPECT_TRUE(serverShows("1280/"));
    EXPECT_TRUE(saveScreenshot(session_.x(), picture("question")));
    clickButton(*sheet(), "保留");
    EXPECT_TRUE(until([this] { return !controller().busy(); }));
    EXPECT_EQ(sheet(), nullptr) << sheetText();
    EXPECT_TRUE(until([this] { return resolution() == "1280 × 720"; })) << "the row follows";
    EXPECT_TRUE(serverShows("1280/"));
    EXPECT_TRUE(fs::is_empty(session_.folder() + "/runtime/rook-bay")) << "no record is left";
}

TEST_F(ScreensTest, ATrialIsTakenBackByTheUserAndByTheClock) {
    ASSERT_TRUE(opened());
    begin();
    ASSERT_TRUE(until([this] { return sheetText().find(question) != std::string::npos; }));
    clickButton(*sheet(), "恢复原模式");
    EXPECT_TRUE(serverShows("1920/"));
    EXPECT_TRUE(until([this] { return isQuiet(); }));
    EXPECT_EQ(sheetText(), "") << "as asked";

    begin();
    ASSERT_TRUE(until([this] { return sheetText().find(question) != std::string::npos; }));
    const double asked = monotonicNow();
    EXPECT_TRUE(serverShows("1280/"));
    ASSERT_TRUE(until([this] { return sheetText().empty(); }, 25));
    EXPECT_NEAR(monotonicNow() - asked, 19, 0.8);
    EXPECT_TRUE(serverShows("1920/"));
}

TEST_F(ScreensTest, AQuitInTheMiddleTakesTheModeBack) {
    ASSERT_TRUE(opened());
    begin();
    ASSERT_TRUE(until([this] { return sheetText().find(question) != std::string::npos; }));
    controller_.reset();
    EXPECT_TRUE(serverShows("1920/"));
}

TEST_F(ScreensTest, ResolutionHelpersThatMisbehave) {
    ASSERT_TRUE(opened());
    struct Case {
        const char* script;
        const char* text;
    };
    for (const Case& tested :
         {Case{"echo '{\"ok\":false,\"message\":\"显卡拒绝\"}'", "显卡拒绝"}, Case{"kill -9 $$", "模块未返回确认"},
          Case{"echo '\xff\xfe['; cat", "模块未返回确认"},
          Case{"head -c 5000 /dev/zero | tr '\\0' x; cat", "模块未返回确认"},
          Case{"echo '{\"ok\":true,\"trial\":true}'; exec <&-; sleep 0.3; echo '{\"ok\":true,\"kept\":true}'",
               "读回的实际模式与选择不一致"},
          Case{"exec >&-; cat; exit 3", "模块未返回确认"}}) {
        SCOPED_TRACE(tested.script);
        install("ResolutionHelper", tested.script);
        ASSERT_TRUE(until([this] { return isQuiet(); }, 15));
        begin();
        ASSERT_TRUE(until([this] { return sheetText().find(incomplete) != std::string::npos; }, 15)) << sheetText();
        EXPECT_THAT(sheetText(), testing::HasSubstr(tested.text));
        EXPECT_FALSE(controller().busy());
        session_.x().tapKey(XKB_KEY_Return);
        EXPECT_TRUE(until([this] { return sheetText().empty(); }));
    }
    EXPECT_TRUE(saveScreenshot(session_.x(), picture("error")));
    writeFile(helpers_ / "ResolutionHelper", "#!/nonexistent\n");
    ASSERT_TRUE(until([this] { return isQuiet(); }));
    begin();
    EXPECT_TRUE(until([this] { return sheetText().find("无法启动分辨率模块") != std::string::npos; })) << sheetText();
    EXPECT_FALSE(controller().busy());
}

TEST_F(ScreensTest, OtherHelpersThatMisbehaveAreToldInWords) {
    const auto displayHelper = [this](const std::string& answerToProbe) {
        const std::string id = controller().rows().empty() ? "0" : std::to_string(controller().rows()[0].id);
        install("DisplayHelper",
                "case $1 in list) echo '[{\"id\":" + id + ",\"uuid\":\"x\"}]';; *) " + answerToProbe + ";; esac");
    };
    install("CableHelper", "kill -9 $$");
    install("DisplayHelper", "yes '{}' | head -c 20000000");
    ASSERT_TRUE(opened(15));
    EXPECT_EQ(controller().connections().error, "连接信息暂时不可用。");
    EXPECT_EQ(status(0), noChannel);
    for (const char* script : {"echo '[{\"ports\":[]}]'", "printf '{\"ports\":['", "head -c 9000000 /dev/zero"}) {
        install("CableHelper", script);
        displayHelper("kill -9 $$");
        ASSERT_TRUE(refreshed());
        EXPECT_EQ(controller().connections().error, "连接信息暂时不可用。") << script;
        EXPECT_EQ(status(0), "控制模块未返回有效数据。");
    }
    controller().navigate(1);
    live(0.6);
    EXPECT_TRUE(saveScreenshot(session_.x(), picture("connections-error")));
    install("CableHelper", "echo '{}'");
    displayHelper("echo '{\"ok\":false'; sleep 60");
    ASSERT_TRUE(refreshed());
    EXPECT_EQ(status(0), "显示器响应超时，请检查连接。");
    EXPECT_TRUE(session_.processes("DisplayHelper").empty()) << "killed";
    fs::remove(helpers_ / "DisplayHelper");
    fs::remove(helpers_ / "CableHelper");
    ASSERT_TRUE(refreshed());
    EXPECT_EQ(controller().connections().error, "连接诊断模块未安装。");
    EXPECT_EQ(status(0), "Intel Mac 暂不支持单屏硬件控制，全部熄屏仍可使用。");
}

TEST_F(ScreensTest, ADisplayInStandbyThatLeavesStaysInTheList) {
    ASSERT_TRUE(opened());
    secondOutput();
    ASSERT_TRUE(until([this] { return controller().rows().size() == 2 && !controller().busy(); }));
    install("DisplayHelper", "case $1 in list) echo '[{\"id\":" + std::to_string(controller().rows()[1].id) +
                                 ",\"uuid\":\"x\"}]';; wake) echo "
                                 "'{\"ok\":true,\"verified\":true,\"message\":\"已唤醒\"}';; "
                                 "*) echo '{\"ok\":true,\"message\":\"已待机\"}';; esac");
    ASSERT_TRUE(refreshed());
    EXPECT_EQ(status(1), "单屏待机可用");
    controller().sleep(1);
    ASSERT_TRUE(until([this] { return status(1) == "已待机"; }));
    xrandr({"--output", "DUMMY1", "--off"});
    install("DisplayHelper", "case $1 in list) echo '[]';; *) echo "
                             "'{\"ok\":true,\"verified\":true,\"message\":\"已唤醒\"}';; esac");
    ASSERT_TRUE(until([this] { return !controller().rows().back().online; }));
    EXPECT_EQ(status(1), "待机后屏幕已不可达；可以尝试唤醒，失败时请按显示器电源键。");
    live(0.6);
    EXPECT_TRUE(saveScreenshot(session_.x(), picture("unreachable")));
    controller().wake(1);
    ASSERT_TRUE(until([this] { return status(1) == "已唤醒"; }));
    ASSERT_TRUE(refreshed());
    EXPECT_EQ(controller().rows().size(), 1U);
}

} // namespace

} // namespace rb
