#pragma once

#include "tests/session/SessionTest.h"

#include <QJsonArray>

#include <filesystem>

namespace rb {

namespace fs = std::filesystem;

// A line 1,280 pixels wide in the real program, with files of the test's own on it, and hands.
class HandsTest : public SessionTest {
protected:
    static constexpr double patience = 10; // seconds, on a busy machine
    static constexpr int middleOfScreen = 640;
    static constexpr int slotWidth = 174;
    static constexpr int cardHeight = 120; // pixels from the top of the screen to somewhere on every card
    // X11 keysyms.
    static constexpr std::uint32_t escapeKey = 0xFF1B;
    static constexpr std::uint32_t rightKey = 0xFF53;
    static constexpr std::uint32_t controlKey = 0xFFE3;
    static constexpr const char* previewClass = "rookbay-preview";

    HandsTest()
        : SessionTest({.compositor = true}) {
        // Programs that come without a home of their own put things there.
        session().environment["XDG_DATA_HOME"] = session().folder() + "/data";
        fs::create_directories(session().folder() + "/data");
    }

    std::string path(const std::string& name) { return session().folder() + "/" + name; }
    std::string makeFile(const std::string& name, const std::string& text = "text") {
        fs::create_directories(fs::path(path(name)).parent_path());
        writeFile(path(name), text);
        return path(name);
    }
    // The line with these files, down.
    void hang(const std::vector<std::string>& files) {
        std::string list;
        for (const std::string& file : files) {
            list += (list.empty() ? "\"" : ", \"") + file + "\"";
        }
        session().writeDefaults("{\"ClotheslinePaths\": [" + list + "]}");
        x().movePointer(middleOfScreen, 600);
        startRookBay();
        comeDown();
    }
    void comeDown() {
        x().movePointer(middleOfScreen, 2);
        ASSERT_TRUE(waitUntil([&] { return lineShows(); }, patience));
        // Drawn where it will stay.
        EXPECT_TRUE(staysTrue([&] { return lineShows(); }, 0.8));
    }
    // Brings the pointer onto a card, which takes the mouse once the line has seen it there.
    void hover(int px) {
        x().movePointer(px, cardHeight);
        EXPECT_TRUE(waitUntil(
            [&] {
                const auto under = x().facts(x().windowUnderPointer());
                return under && under->className == panelClass;
            },
            patience));
    }
    bool lineShows() {
        for (const WindowFacts& panel : x().viewableOfClass(panelClass)) {
            if (panel.height == 210) {
                return true;
            }
        }
        return false;
    }
    static int cardX(std::size_t index, std::size_t count) {
        return middleOfScreen + static_cast<int>(index) * slotWidth - static_cast<int>(count - 1) * slotWidth / 2;
    }
    std::vector<std::string> hanging() const {
        std::vector<std::string> paths;
        for (const auto& path : defaults()["ClotheslinePaths"].toArray()) {
            paths.push_back(path.toString().toStdString());
        }
        return paths;
    }
    bool waitForHanging(const std::vector<std::string>& paths) {
        return waitUntil([&] { return hanging() == paths; }, patience);
    }
    // What another program pastes; empty when it gets nothing.
    std::string pasted(const std::string& target) {
        Program& xclip = session().start({"xclip", "-selection", "clipboard", "-t", target, "-o"});
        return xclip.waitForExit(patience) == 0 ? xclip.output() : "";
    }
    // A file manager's window at a known place: 700 by 350 pixels at (300, 400).
    bool openFileManager(const std::string& folder, const std::string& program = "thunar") {
        session().start({program, folder});
        return place(program, 300, 400, 700, 350) &&
               // Ready to take drops only some time after it shows.
               staysTrue([&] { return !x().viewableOfClass(program).empty(); }, 2.5);
    }
    // Moves the program's window there once it shows.
    bool place(const std::string& program, int left, int top, int width, int height) {
        if (!waitUntil([&] { return !x().viewableOfClass(program).empty(); }, 2 * patience)) {
            return false;
        }
        const std::string id = std::to_string(x().viewableOfClass(program).front().window);
        const auto tell = [&](const char* command, int a, int b) {
            session().start({"xdotool", command, id, std::to_string(a), std::to_string(b)}).waitForExit(patience);
        };
        tell("windowsize", width, height);
        tell("windowmove", left, top);
        return waitUntil(
            [&] {
                const auto windows = x().viewableOfClass(program);
                return !windows.empty() && std::abs(windows.front().x - left) < 50;
            },
            patience);
    }
    // Another program in the lower left, from which that is dragged.
    Program& startDraggingProgram(const std::string& bytes, const std::string& type, const std::string& actions) {
        writeFile(path("dragged"), bytes);
        Program& program = session().start({DRAGGING_PROGRAM, path("dragged"), type, actions});
        EXPECT_TRUE(place("dragging-program", 100, 550, 300, 200));
        return program;
    }
    void dragFromProgram(int toX, int toY) { x().dragTo(200, 650, toX, toY); }
    // The strip at the top that takes drops.
    bool catcherShows() {
        for (const WindowFacts& panel : x().viewableOfClass(panelClass)) {
            if (panel.y == 0 && panel.height != 210) {
                return true;
            }
        }
        return false;
    }
};

} // namespace rb
