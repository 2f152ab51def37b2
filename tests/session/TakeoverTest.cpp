#include "tests/session/SessionTest.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

// Captures of real screenshot programs: sent into our folder and onto the line, the programs' own settings given back
// however the program ends; and folders that come, go and change under the watcher.
namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double patience = 10; // seconds, on a busy machine
constexpr int lineHeight = 210;

class TakeoverTest : public SessionTest {
protected:
    TakeoverTest()
        : SessionTest({.compositor = true}) {
        // Nothing may be everywhere the same, or no picture has just one place.
        session().start({"xterm", "-geometry", "70x24+180+300"});
        EXPECT_TRUE(waitUntil([&] { return !x().viewableOfClass("XTerm").empty(); }));
        fs::create_directories(session().configFolder() + "/flameshot");
        fs::create_directories(session().configFolder() + "/xfce4");
        writeFile(flameshot(), flameshotsOwn);
    }

    std::string flameshot() { return session().configFolder() + "/flameshot/flameshot.ini"; }
    std::string xfce() { return session().configFolder() + "/xfce4/xfce4-screenshooter"; }
    std::string inbox() { return session().folder() + "/data/rook-bay/Screenshots"; }
    QJsonObject screenSettings() {
        const std::string text = readFile(session().configFolder() + "/rook-bay/screencapture.json").value_or("");
        return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
    }
    bool isTakenOver() {
        return screenSettings()["location"].toString().toStdString() == inbox() &&
               readFile(flameshot()).value_or("").find("savePath=" + inbox() + "\n") != std::string::npos &&
               readFile(xfce()).value_or("").find("screenshot_dir=file://" + inbox()) != std::string::npos;
    }
    void expectOwnSettings() {
        EXPECT_EQ(readFile(flameshot()), flameshotsOwn);
        EXPECT_FALSE(fs::exists(xfce())) << "there was none";
        EXPECT_FALSE(screenSettings().contains("location"));
        EXPECT_FALSE(screenSettings().contains("target"));
        EXPECT_FALSE(fs::exists(session().configFolder() + "/rook-bay/screenshot-programs.json"));
        EXPECT_FALSE(defaults().contains("ClotheslineInboxSaved"));
    }
    Program& startTakenOver() {
        session().writeDefaults(R"({"ClotheslineInbox": true})");
        x().movePointer(900, 700);
        Program& program = startRookBay();
        EXPECT_TRUE(waitUntil([&] { return isTakenOver(); }, patience));
        return program;
    }
    std::vector<std::string> hanging() const {
        std::vector<std::string> paths;
        for (const auto& path : defaults()["ClotheslinePaths"].toArray()) {
            paths.push_back(path.toString().toStdString());
        }
        return paths;
    }
    static bool isFlight(const SessionEvent& event, SessionEventKind kind) {
        return event.kind == kind && event.window.instance == panelClass && event.window.height > lineHeight;
    }
    // One capture has flown and hangs, and its panel is gone.
    void expectFlightAndCard(EventLog& log, std::size_t number) {
        const auto flights = [&](SessionEventKind kind) {
            return log.count([kind](const SessionEvent& event) { return isFlight(event, kind); });
        };
        EXPECT_TRUE(waitUntil([&] { return flights(SessionEventKind::Mapped) == number; }, patience)) << "no flight";
        EXPECT_TRUE(waitUntil([&] { return hanging().size() == number; }, patience));
        for (const std::string& path : hanging()) {
            EXPECT_EQ(path.rfind(inbox() + "/", 0), 0U) << path;
        }
        EXPECT_TRUE(waitUntil([&] { return flightPanels() == 0; }, patience)) << "the flight's panel stays";
        EXPECT_EQ(flights(SessionEventKind::Mapped), number);
    }
    std::size_t flightPanels() {
        const auto panels = x().viewableOfClass(panelClass);
        return static_cast<std::size_t>(std::count_if(
            panels.begin(), panels.end(), [](const WindowFacts& panel) { return panel.height > lineHeight; }));
    }
    void waitForQuietScreen() {
        EXPECT_TRUE(waitUntil([&] { return x().viewableOfClass(panelClass).empty(); }, patience));
    }

    static inline const std::string flameshotsOwn =
        "[General]\ncontrastOpacity=188\nsavePath=/home/\xe6\x88\x91/\xe5\x9b\xbe\n\n[Shortcuts]\nTYPE_COPY=Return";
};

TEST_F(TakeoverTest, CapturesOfOtherProgramsFlyOntoTheLine) {
    Program& program = startTakenOver();
    EventLog log(session().display());
    EXPECT_EQ(session().start({"flameshot", "full", "--region", "300x200+150+260"}).waitForExit(patience), 0);
    expectFlightAndCard(log, 1);
    waitForQuietScreen();

    Program& screenshooter = session().start({"xfce4-screenshooter", "--fullscreen"});
    const auto answer = [&](const std::string& title) {
        ASSERT_TRUE(waitUntil([&] {
            const auto window = x().viewableTitled(title);
            return window && x().hasFocus(window->window);
        })) << title;
        x().tapKey(XKB_KEY_Return);
    };
    answer("Screenshot");
    answer("Save screenshot as...");
    expectFlightAndCard(log, 2);
    // It writes its settings as it ends, with much that wasn't there before.
    EXPECT_TRUE(screenshooter.waitForExit(patience));
    EXPECT_NE(readFile(xfce()).value_or("").find("action="), std::string::npos);
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(patience), 0);
    EXPECT_EQ(readFile(flameshot()), flameshotsOwn);
    const std::string left = readFile(xfce()).value_or("");
    EXPECT_EQ(left.find("screenshot_dir"), std::string::npos) << left;
}

TEST_F(TakeoverTest, EverySignalGivesTheSettingsBack) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        Program& program = startTakenOver();
        program.signal(signal);
        EXPECT_EQ(program.waitForExit(patience), 0);
        expectOwnSettings();
        EXPECT_TRUE(defaults()["ClotheslineInbox"].toBool()) << "on again with the next start";
    }
}

TEST_F(TakeoverTest, WhatAKilledRunLeftIsGivenBackByTheNext) {
    const auto killOne = [&] {
        Program& program = startTakenOver();
        program.signal(SIGKILL);
        EXPECT_EQ(program.waitForExit(patience), 128 + SIGKILL);
        EXPECT_TRUE(isTakenOver());
    };
    killOne();
    // By its orderly end …
    Program& next = startTakenOver();
    next.signal(SIGTERM);
    EXPECT_EQ(next.waitForExit(patience), 0);
    expectOwnSettings();
    // … by its start, when the user has switched it off …
    killOne();
    const std::string saved = *readFile(session().defaultsFile());
    const auto place = saved.find("\"ClotheslineInbox\"");
    ASSERT_NE(place, std::string::npos);
    std::string off = saved;
    off.replace(off.find("true", place), 4, "false");
    writeFile(session().defaultsFile(), off);
    Program& without = startRookBay();
    EXPECT_TRUE(waitUntil([&] { return readFile(flameshot()) == flameshotsOwn; }, patience));
    without.signal(SIGTERM);
    EXPECT_EQ(without.waitForExit(patience), 0);
    expectOwnSettings();
    // … or by hand, where there is no display.
    killOne();
    Environment bare = session().environment;
    bare.erase("DISPLAY");
    bare.erase("DBUS_SESSION_BUS_ADDRESS");
    Program& restorer = session().start({ROOKBAY_PROGRAM, "--restore-screenshot-settings"}, bare);
    EXPECT_EQ(restorer.waitForExit(patience), 0) << restorer.output();
    expectOwnSettings();
    EXPECT_EQ(session().start({ROOKBAY_PROGRAM, "--restore-screenshot-settings"}, bare).waitForExit(patience), 0);
    expectOwnSettings();
}

// A save folder of the user's own that lives an eventful life.
class SaveFolderTest : public TakeoverTest {
protected:
    SaveFolderTest()
        : folder_(session().folder() + "/shots") {
        fs::create_directory(folder_);
        const std::string settings = session().configFolder() + "/rook-bay/screencapture.json";
        writeFile(settings, "{\"location\": \"" + folder_ + "\"}");
        fs::permissions(settings, fs::perms::owner_read | fs::perms::owner_write);
        x().movePointer(900, 700);
    }
    void TearDown() override {
        TakeoverTest::TearDown();
        ::umount2(folder_.c_str(), MNT_DETACH);
    }
    static void paint(const std::string& path) {
        QImage picture(40, 30, QImage::Format_RGB32);
        picture.fill(0xff336699);
        picture.save(QString::fromStdString(path), "PNG");
    }
    bool isHung(const std::string& path) {
        const auto paths = hanging();
        return std::find(paths.begin(), paths.end(), path) != paths.end();
    }
    // A capture into the folder is noticed, within the time that the program takes to look after its folders.
    void expectNoticed(const std::string& name, double limit = patience) {
        paint(folder_ + "/" + name);
        EXPECT_TRUE(waitUntil([&] { return isHung(folder_ + "/" + name); }, limit)) << name;
    }

    std::string folder_;
};

TEST_F(SaveFolderTest, IsPickedUpAgainWhateverBecomesOfIt) {
    Program& program = startRookBay();
    expectNoticed("first.png");
    fs::remove_all(folder_);
    fs::create_directory(folder_);
    expectNoticed("recreated.png");

    const std::string elsewhere = session().folder() + "/elsewhere";
    fs::rename(folder_, elsewhere);
    fs::create_directory(folder_);
    expectNoticed("replaced.png");
    fs::remove_all(folder_);
    fs::rename(elsewhere, folder_);
    expectNoticed("moved-back.png");

    fs::rename(folder_, elsewhere);
    fs::create_directory_symlink(elsewhere, folder_);
    expectNoticed("through-a-link.png");
    const std::string third = session().folder() + "/third";
    fs::create_directory(third);
    fs::remove(folder_);
    fs::create_directory_symlink(third, folder_);
    expectNoticed("through-another.png");

    // Away for so long that the Desktop takes its place.
    fs::remove(folder_);
    poll(nullptr, 0, 4500);
    fs::create_directory(folder_);
    poll(nullptr, 0, 2500);
    expectNoticed("back.png");
    EXPECT_TRUE(program.isRunning());
    EXPECT_EQ(program.output().find("cannot watch"), std::string::npos) << program.output();
}

TEST_F(SaveFolderTest, IsReleasedForUnmountingAndPickedUpOnTheNextMount) {
    if (::mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=4m") != 0) {
        GTEST_SKIP() << "mounts aren't allowed here";
    }
    startRookBay();
    expectNoticed("mounted.png");
    EXPECT_TRUE(waitUntil([&] { return ::umount(folder_.c_str()) == 0; }, patience)) << "the watcher keeps it busy";
    expectNoticed("beneath.png");
    ASSERT_EQ(::mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=4m"), 0);
    expectNoticed("mounted-again.png");
}

TEST_F(SaveFolderTest, AStormOfFilesLeavesTheProgramAnswering) {
    useCountingLocker();
    startRookBay();
    const std::string picture = session().folder() + "/picture.png";
    paint(picture);
    expectNoticed("first.png");
    for (int i = 0; i < 5000; ++i) {
        fs::copy_file(picture, folder_ + "/storm-" + std::to_string(i) + ".png");
    }
    EXPECT_TRUE(waitUntil([&] { return !hanging().empty() && !isHung(folder_ + "/first.png"); }, patience));
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(1, 2)) << "in the middle of it";
    expectNoticed("last.png", 45);
}

TEST_F(SaveFolderTest, AUserWithoutADesktopIsNotBotheredWithIt) {
    fs::remove(session().configFolder() + "/rook-bay/screencapture.json");
    fs::remove(session().folder() + "/home/Desktop");
    Program& program = startRookBay();
    EXPECT_TRUE(waitUntil([&] { return program.output().find("cannot watch") != std::string::npos; }, patience));
    EXPECT_TRUE(staysTrue([&] { return x().viewableOfClass(panelClass).empty(); }, 3)) << "a notice";
    EXPECT_EQ(program.output().find("cannot watch"), program.output().rfind("cannot watch")) << "told once";
}

} // namespace

} // namespace rb
