#include "tests/session/SessionTest.h"

#include <QImage>
#include <QJsonArray>

#include <filesystem>

// Hands on the cards of the real program, with other people's programs on the other side.
namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double patience = 10; // seconds, on a busy machine
constexpr int middleOfScreen = 640;
constexpr int slotWidth = 174;
constexpr int cardHeight = 120; // pixels from the top of the screen to somewhere on every card
// X11 keysyms.
constexpr std::uint32_t escapeKey = 0xFF1B;
constexpr std::uint32_t rightKey = 0xFF53;
constexpr std::uint32_t controlKey = 0xFFE3;
constexpr const char* previewClass = "rookbay-preview";

class HandsTest : public SessionTest {
protected:
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
    // A file manager's window at a known place.
    bool openFileManager(const std::string& folder) {
        session().start({"thunar", folder});
        std::optional<WindowFacts> window;
        const std::string title = fs::path(folder).filename().string() + " - Thunar";
        if (!waitUntil([&] { return (window = x().viewableTitled(title)).has_value(); }, 2 * patience)) {
            return false;
        }
        const std::string id = std::to_string(window->window);
        session().start({"xdotool", "windowsize", id, "700", "350"}).waitForExit(patience);
        session().start({"xdotool", "windowmove", id, "300", "400"}).waitForExit(patience);
        // Ready to take drops only some time after it shows.
        return staysTrue([&] { return x().viewableTitled(title).has_value(); }, 2.5);
    }
};

TEST_F(HandsTest, ACopiedCardPastesAsFileAndAsPicture) {
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const std::string file = path("a b.png");
    ASSERT_TRUE(picture.save(QString::fromStdString(file)));
    hang({file});
    hover(middleOfScreen);
    x().click(middleOfScreen, cardHeight);
    EXPECT_TRUE(waitUntil([&] { return pasted("text/uri-list").find("a%20b.png") != std::string::npos; }, patience));
    EXPECT_NE(pasted("x-special/gnome-copied-files").find("copy\nfile://"), std::string::npos);
    EXPECT_EQ(pasted("image/png"), readFile(file));
}

TEST_F(HandsTest, HoldingACardPreviewsItAndEscapeEndsThat) {
    hang({makeFile("notes.txt"), makeFile("other.txt")});
    hover(cardX(0, 2));
    x().pressButton();
    ASSERT_TRUE(waitUntil([&] { return !x().viewableOfClass(previewClass).empty(); }, patience));
    x().releaseButton();
    const auto shows = [&](const std::string& title) {
        const auto windows = x().viewableOfClass(previewClass);
        return !windows.empty() && windows.front().title == title;
    };
    EXPECT_TRUE(waitUntil([&] { return shows("notes.txt"); }, patience));
    ASSERT_TRUE(waitUntil([&] { return x().hasFocus(x().viewableOfClass(previewClass).front().window); }, patience));
    x().tapKey(rightKey);
    EXPECT_TRUE(waitUntil([&] { return shows("other.txt"); }, patience));
    x().tapKey(escapeKey);
    EXPECT_TRUE(waitUntil([&] { return x().viewableOfClass(previewClass).empty(); }, patience));
}

TEST_F(HandsTest, TheContextMenuTrashesWhatAFileManagerCanRestore) {
    const std::string file = makeFile("notes.txt");
    hang({file});
    hover(middleOfScreen);
    x().click(middleOfScreen, cardHeight, 3);
    ASSERT_TRUE(waitUntil([&] { return !x().viewableOfClass(menuClass).empty(); }, patience));
    const WindowFacts menu = x().viewableOfClass(menuClass).front();
    // Two rows above the last one.
    constexpr int shadow = 18;
    constexpr int rows = 5 + 13 + 2 * 26;
    x().click(menu.x + menu.width / 2, menu.y + menu.height - shadow - rows);
    EXPECT_TRUE(waitUntil([&] { return !fs::exists(file); }, patience));
    EXPECT_TRUE(waitForHanging({}));
    Program& list = session().start({"gio", "trash", "--list"});
    ASSERT_EQ(list.waitForExit(patience), 0);
    const std::string entry = list.output().substr(0, list.output().find('\t'));
    ASSERT_NE(list.output().find(file), std::string::npos) << list.output();
    EXPECT_EQ(session().start({"gio", "trash", "--restore", entry}).waitForExit(patience), 0);
    EXPECT_EQ(readFile(file), "text");
}

TEST_F(HandsTest, ACardDroppedOnAFolderCardMovesOnTheDisk) {
    const std::string file = makeFile("notes.txt");
    fs::create_directories(path("box"));
    makeFile("box/notes.txt", "older");
    hang({file, path("box")});
    x().dragTo(cardX(0, 2), cardHeight, cardX(1, 2), cardHeight);
    x().releaseButton();
    EXPECT_TRUE(waitForHanging({path("box")}));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(readFile(path("box/notes 2.txt")), "text");
    EXPECT_EQ(readFile(path("box/notes.txt")), "older");
}

TEST_F(HandsTest, EscapeBringsADraggedCardBack) {
    const std::string file = makeFile("notes.txt");
    hang({file});
    x().dragTo(middleOfScreen, cardHeight, middleOfScreen, 500);
    x().tapKey(escapeKey);
    x().releaseButton();
    EXPECT_TRUE(staysTrue([&] { return hanging() == std::vector<std::string>{file}; }, 1));
    // And the hand is free for the next one.
    comeDown();
    hover(middleOfScreen);
    x().click(middleOfScreen, cardHeight);
    EXPECT_TRUE(waitUntil([&] { return !pasted("text/uri-list").empty(); }, patience));
}

TEST_F(HandsTest, FilesGoToAndComeFromAFileManager) {
    const std::string file = makeFile("notes.txt");
    const std::string copied = makeFile("copied.txt");
    const std::string theirs = makeFile("folder/a.txt");
    hang({file, copied});
    ASSERT_TRUE(openFileManager(path("folder")));
    comeDown();
    x().dragTo(cardX(0, 2), cardHeight, 850, 690);
    x().releaseButton();
    EXPECT_TRUE(waitUntil([&] { return fs::exists(path("folder/notes.txt")) && !fs::exists(file); }, patience));
    EXPECT_TRUE(waitForHanging({copied})) << "the card went with its file";

    comeDown();
    x().pressKey(controlKey);
    x().dragTo(middleOfScreen, cardHeight, 850, 690);
    x().releaseButton();
    EXPECT_TRUE(waitUntil([&] { return fs::exists(path("folder/copied.txt")); }, patience));
    x().releaseKey(controlKey);
    EXPECT_TRUE(staysTrue([&] { return hanging() == std::vector<std::string>{copied}; }, 1));
    EXPECT_TRUE(fs::exists(copied));

    // The first file of theirs to the top of the screen.
    x().dragTo(512, 545, middleOfScreen, 14);
    EXPECT_TRUE(waitUntil([&] { return lineShows(); }, patience));
    x().releaseButton();
    EXPECT_TRUE(waitForHanging({copied, theirs}));
    EXPECT_TRUE(fs::exists(theirs));
}

} // namespace

} // namespace rb
