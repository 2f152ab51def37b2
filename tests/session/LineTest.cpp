#include "tests/session/SessionTest.h"

#include <QJsonArray>

#include <csignal>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

// The clothesline on a real screen: how it comes and goes, what it lets through, and where it shows.
namespace rb {

namespace {

constexpr double patience = 10; // seconds, on a busy machine
constexpr int lineHeight = 210;

class LineTest : public SessionTest {
protected:
    LineTest()
        : SessionTest({.compositor = true}) {}

    std::string makeFile(const std::string& name) {
        const std::string path = session().folder() + "/" + name;
        writeFile(path, "text");
        return path;
    }
    Program& startWithPointerBelow() {
        x().movePointer(640, 600);
        Program& program = startRookBay();
        return program;
    }
    std::optional<WindowFacts> line() {
        for (const WindowFacts& panel : x().viewableOfClass(panelClass)) {
            if (panel.height == lineHeight) {
                return panel;
            }
        }
        return std::nullopt;
    }
    bool waitForLine(bool shown) {
        return waitUntil([&] { return line().has_value() == shown; }, patience);
    }
    void restInTheMenuBar(int px, int py = 2) { x().movePointer(px, py); }
    std::vector<std::string> savedPaths() const {
        std::vector<std::string> paths;
        for (const auto& path : defaults()["ClotheslinePaths"].toArray()) {
            paths.push_back(path.toString().toStdString());
        }
        return paths;
    }
};

TEST_F(LineTest, ComesDownUnderARestingPointerAndLeavesAfterIt) {
    startWithPointerBelow();
    EXPECT_TRUE(staysTrue([&] { return !line(); }, 0.5));
    const double arrived = monotonicNow();
    restInTheMenuBar(640);
    ASSERT_TRUE(waitForLine(true));
    EXPECT_GT(monotonicNow() - arrived, 0.24);
    const auto shown = line();
    EXPECT_TRUE(shown->overrideRedirect);
    EXPECT_EQ(shown->x, 0);
    EXPECT_EQ(shown->width, x().screen().width_in_pixels);
    const WindowFacts bar = x().viewableOfClass(menuBarClass).front();
    EXPECT_EQ(shown->y, bar.y + bar.height) << "right under the menu bar";
    const double left = monotonicNow();
    x().movePointer(640, 600);
    ASSERT_TRUE(waitForLine(false));
    EXPECT_GT(monotonicNow() - left, 0.7) << "half a second away, then the way up";
}

TEST_F(LineTest, AHandedOverFileHangsAndOnlyItsCardTakesClicks) {
    const std::string file = makeFile("notes.txt");
    startWithPointerBelow();
    const xcb_window_t terminal = startFocusedTerminal();
    Program& second = session().start({ROOKBAY_PROGRAM, "hang", file});
    EXPECT_EQ(second.waitForExit(patience), 0);
    ASSERT_TRUE(waitForLine(true));
    EXPECT_TRUE(waitUntil([&] { return savedPaths() == std::vector<std::string>{file}; }, patience));
    const auto shown = line();
    const int middle = shown->x + shown->width / 2;
    // On the card the line takes the pointer; beside it and on the rope what lies beneath does.
    x().movePointer(middle, shown->y + 90);
    EXPECT_TRUE(waitUntil([&] { return x().windowUnderPointer() == shown->window; }, patience));
    x().movePointer(middle + 200, shown->y + 90);
    EXPECT_TRUE(waitUntil([&] { return x().windowUnderPointer() != shown->window; }, patience));
    EXPECT_TRUE(line()) << "still down";
    EXPECT_EQ(x().focus(), terminal) << "the line takes no focus";
}

TEST_F(LineTest, FollowsThePointersMonitorAndOutlivesIt) {
    const std::string file = makeFile("notes.txt");
    session().writeDefaults(R"({"ClotheslinePaths": [")" + file + "\"]}");
    startWithPointerBelow();
    const auto monitors = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> command{"xrandr"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(session().start(command).waitForExit(patience), 0);
    };
    monitors({"--setmonitor", "LEFT", "640/200x800/200+0+0", "screen"});
    monitors({"--setmonitor", "RIGHT", "640/200x800/200+640+0", "none"});
    const auto lineAt = [&](int left, int width) {
        const auto shown = line();
        return shown && shown->x == left && shown->width == width;
    };
    restInTheMenuBar(960);
    EXPECT_TRUE(waitUntil([&] { return lineAt(640, 640); }, patience));
    x().movePointer(300, 600);
    ASSERT_TRUE(waitForLine(false));
    restInTheMenuBar(300);
    EXPECT_TRUE(waitUntil([&] { return lineAt(0, 640); }, patience));
    x().movePointer(960, 600);
    ASSERT_TRUE(waitForLine(false));
    restInTheMenuBar(960);
    ASSERT_TRUE(waitUntil([&] { return lineAt(640, 640); }, patience));
    monitors({"--delmonitor", "RIGHT"});
    EXPECT_TRUE(waitUntil([&] { return !lineAt(640, 640); }, patience)) << "it doesn't stay where no screen is";
    EXPECT_EQ(savedPaths(), std::vector<std::string>{file});
    x().movePointer(300, 600);
    ASSERT_TRUE(waitForLine(false));
    restInTheMenuBar(300);
    EXPECT_TRUE(waitForLine(true));
}

TEST_F(LineTest, HangsWhateverItIsGiven) {
    Program& program = startWithPointerBelow();
    const std::string folder = session().folder() + "/";
    writeFile(folder + "empty.png", "");
    writeFile(folder + "junk.jpg", "junk");
    ASSERT_EQ(symlink("/nowhere", (folder + "dangling.png").c_str()), 0);
    ASSERT_EQ(mkfifo((folder + "pipe.png").c_str(), 0600), 0);
    const std::string longest = "c\x01\n\t" + std::string(247, 'n') + ".txt"; // 255 bytes
    writeFile(folder + longest, "text");
    writeFile(folder + "bad\xff\xfe.txt", "text");
    const std::vector<std::string> names{"empty.png", "junk.jpg",        "dangling.png", "pipe.png",
                                         longest,     "bad\xff\xfe.txt", "missing"};
    for (const std::string& name : names) {
        EXPECT_TRUE(session().start({ROOKBAY_PROGRAM, "hang", folder + name}).waitForExit(patience));
    }
    const std::vector<std::string> hung{folder + "empty.png", folder + "junk.jpg", folder + "pipe.png",
                                        folder + longest};
    EXPECT_TRUE(waitUntil([&] { return savedPaths() == hung; }, patience));
    ASSERT_TRUE(waitForLine(true));
    ASSERT_TRUE(waitForLine(false));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(LineTest, EndsInTheMiddleOfAThumbnail) {
    const std::string data = session().folder() + "/thumbnailers-of-ours";
    std::filesystem::create_directories(data + "/thumbnailers");
    writeFile(data + "/thumbnailers/slow.thumbnailer",
              "[Thumbnailer Entry]\nTryExec=sleep\nExec=sleep 61\nMimeType=text/plain;\n");
    session().environment["XDG_DATA_HOME"] = data;
    const std::string file = makeFile("notes.txt");
    session().writeDefaults(R"({"ClotheslinePaths": [")" + file + "\"]}");
    Program& program = startWithPointerBelow();
    ASSERT_TRUE(waitUntil([&] { return session().processes("sleep").size() == 1; }, patience));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(patience), 0);
    EXPECT_TRUE(waitUntil([&] { return session().processes("sleep").empty(); }, patience));
}

TEST_F(LineTest, StartsWithTenThousandSavedPaths) {
    const std::string file = makeFile("notes.txt");
    std::string list = "\"/nowhere/first\"";
    for (int i = 0; i < 10'000; ++i) {
        list += ",\"/nowhere/" + std::to_string(i) + "\"";
    }
    session().writeDefaults("{\"ClotheslinePaths\": [" + list + ",\"" + file + "\"]}");
    startWithPointerBelow();
    EXPECT_TRUE(waitUntil([&] { return savedPaths() == std::vector<std::string>{file}; }, patience));
}

} // namespace

} // namespace rb
