#include "tests/session/clipboard/ClipboardSession.h"

#include <QImage>

#include <csignal>
#include <filesystem>
#include <functional>
#include <xkbcommon/xkbcommon-keysyms.h>

// The history among the programs that people copy and paste with.
namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class ClipboardProgramsTest : public ClipboardSessionTest {
protected:
    // Starts it and waits until its window of that class has the keyboard.
    void startFocused(const std::vector<std::string>& command, const std::string& windowClass) {
        session().start(command);
        ASSERT_TRUE(waitUntil([&] { return !x().viewableOfClass(windowClass).empty(); }, 30)) << "no " << windowClass;
        ASSERT_TRUE(focus(windowClass));
    }
    [[nodiscard]] bool focus(const std::string& windowClass) {
        return waitUntil([&] {
            const auto found = x().viewableOfClass(windowClass);
            if (found.empty()) {
                return false;
            }
            const WindowFacts& facts = found.front();
            if (!x().hasFocus(facts.window)) {
                x().click(facts.x + facts.width / 2, facts.y + facts.height - 60);
            }
            return waitUntil([&] { return x().hasFocus(facts.window); }, 1);
        });
    }
    // Again and again, since programs show their window before they take keys in.
    [[nodiscard]] bool doUntil(const std::function<void()>& act, const std::function<bool()>& done) {
        for (int attempt = 0; attempt < 6; ++attempt) {
            act();
            if (waitUntil(done, 4)) {
                return true;
            }
        }
        return false;
    }
    void copyAll() {
        x().tapKey(XKB_KEY_a, {XKB_KEY_Control_L});
        // A file manager that doesn't know of its selection yet copies the name as a text.
        (void)staysTrue([] { return true; }, 0.4);
        x().tapKey(XKB_KEY_c, {XKB_KEY_Control_L});
    }
    [[nodiscard]] bool isNewest(const std::string& text) {
        const auto found = texts();
        return !found.empty() && found.front() == text;
    }
    [[nodiscard]] bool copiesAll(const std::string& expected) {
        return doUntil([&] { copyAll(); }, [&] { return isNewest(expected); });
    }
    std::string folder(const std::string& name) {
        const std::string path = session().folder() + "/" + name;
        fs::create_directories(path);
        return path;
    }
};

TEST_F(ClipboardProgramsTest, EditorsCopiesLandOnceAndEntriesPasteThere) {
    startRookBay();
    const std::string ofGtk = file("gtk.txt", "from the GTK editor 文字");
    const std::string ofQt = file("qt.txt", "from the Qt editor\nline two");
    Program& gtk = session().start({"l3afpad", ofGtk});
    ASSERT_TRUE(waitUntil([&] { return !x().viewableOfClass("l3afpad").empty(); }, 30));
    ASSERT_TRUE(focus("l3afpad"));
    ASSERT_TRUE(copiesAll("from the GTK editor 文字"));
    gtk.end();
    startFocused({"featherpad", "--standalone", ofQt}, "featherpad");
    ASSERT_TRUE(copiesAll("from the Qt editor\nline two"));
    EXPECT_THAT(texts(), ElementsAre("from the Qt editor\nline two", "from the GTK editor 文字")) << "each once";
    // Over what is selected.
    chooseEntry(XKB_KEY_2);
    ASSERT_TRUE(waitForNewest("from the GTK editor 文字"));
    ASSERT_TRUE(focus("featherpad"));
    EXPECT_TRUE(doUntil(
        [&] {
            x().tapKey(XKB_KEY_a, {XKB_KEY_Control_L});
            x().tapKey(XKB_KEY_v, {XKB_KEY_Control_L});
            x().tapKey(XKB_KEY_s, {XKB_KEY_Control_L});
        },
        [&] { return readFile(ofQt).value_or("").rfind("from the GTK editor 文字", 0) == 0; }));
    EXPECT_EQ(texts().size(), 2U);
}

TEST_F(ClipboardProgramsTest, APictureViewersCopyIsAPicture) {
    startRookBay();
    QImage picture(120, 80, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    const std::string path = session().folder() + "/picture.png";
    ASSERT_TRUE(picture.save(QString::fromStdString(path)));
    startFocused({"lximage-qt", path}, "lximage-qt");
    ASSERT_TRUE(doUntil(
        [&] {
            x().tapKey(XKB_KEY_e, {XKB_KEY_Alt_L});
            (void)staysTrue([] { return true; }, 0.3); // a menu that is still opening swallows keys
            constexpr int rowsToCopy = 5;
            for (int row = 0; row < rowsToCopy; ++row) {
                x().tapKey(XKB_KEY_Down);
            }
            x().tapKey(XKB_KEY_Return);
        },
        [&] { return isNewest("kind 1"); }));
    ASSERT_EQ(items().size(), 1U);
    const SharedBytes bytes = items().at(0).imageData()->bytes();
    const QImage recorded = QImage::fromData(bytes->data(), static_cast<int>(bytes->size()));
    EXPECT_EQ(recorded.size(), picture.size());
    EXPECT_EQ(recorded.pixel(60, 40), picture.pixel(60, 40));
}

TEST_F(ClipboardProgramsTest, AFileManagersFilesLandOnceAndPasteInAnother) {
    startRookBay();
    const std::string from = folder("from");
    const std::string to = folder("to");
    writeFile(from + "/文件 one.txt", "contents");
    startFocused({"pcmanfm-qt", from}, "pcmanfm-qt");
    ASSERT_TRUE(doUntil([&] { copyAll(); }, [&] { return isNewest("kind 2"); }));
    ASSERT_THAT(texts(), ElementsAre("kind 2"));
    EXPECT_THAT(items().at(0).paths().value(), ElementsAre(from + "/文件 one.txt"));
    xclip("something else meanwhile");
    ASSERT_TRUE(waitForNewest("something else meanwhile"));
    chooseEntry(XKB_KEY_2);
    ASSERT_TRUE(waitForNewest("kind 2"));
    startFocused({"thunar", to}, "Thunar");
    EXPECT_TRUE(
        doUntil([&] { x().tapKey(XKB_KEY_v, {XKB_KEY_Control_L}); }, [&] { return fs::exists(to + "/文件 one.txt"); }));
    EXPECT_EQ(readFile(to + "/文件 one.txt"), "contents");
    EXPECT_TRUE(fs::exists(from + "/文件 one.txt")) << "copied, not moved";
    EXPECT_EQ(items().size(), 2U);
}

// Runs for each of the clipboard managers that answer.
struct KeepingManager {
    const char* name;
    const char* program;
    bool givesPictures; // MATE's keeps a large one too, but doesn't always give all of it to who pastes
};
class ClipboardManagerTest : public ClipboardProgramsTest, public testing::WithParamInterface<KeepingManager> {};
INSTANTIATE_TEST_SUITE_P(, ClipboardManagerTest,
                         testing::Values(KeepingManager{"Xfce", "xfsettingsd", true},
                                         KeepingManager{"Mate", "mate-settings-daemon", false}),
                         [](const auto& named) { return named.param.name; });

TEST_P(ClipboardManagerTest, AtQuitItKeepsWhatWasChosen) {
    session().start({GetParam().program});
    ASSERT_TRUE(waitUntil([&] { return x().selectionOwner("CLIPBOARD_MANAGER") != XCB_WINDOW_NONE; }, 30));
    const std::string picture = largePicture();
    const std::string path = file("a file.txt", "");
    const std::string uris = "file://" + session().folder() + "/a%20file.txt\r\n";
    struct Case {
        std::string contents;
        std::string target;
        std::string newest;
    };
    std::vector<Case> cases{{"a text 文字", "UTF8_STRING", "a text 文字"}, {uris, "text/uri-list", "kind 2"}};
    if (GetParam().givesPictures) {
        cases.push_back({picture, "image/png", "kind 1"});
    }
    for (const Case& copied : cases) {
        SCOPED_TRACE(copied.target);
        Program& rookBay = startRookBay();
        xclip(copied.contents, copied.target);
        ASSERT_TRUE(waitForNewest(copied.newest));
        chooseEntry(XKB_KEY_1);
        ASSERT_EQ(paste(copied.target), copied.contents);
        const double start = monotonicNow();
        rookBay.signal(SIGTERM);
        EXPECT_EQ(rookBay.waitForExit(), 0);
        EXPECT_LT(monotonicNow() - start, 1.5);
        EXPECT_TRUE(waitUntil([&] { return paste(copied.target) == copied.contents; }));
    }
}

TEST_F(ClipboardProgramsTest, AtQuitAClipboardManagerGetsAPictureThatIsStillBeingMade) {
    session().start({"xfsettingsd"});
    ASSERT_TRUE(waitUntil([&] { return x().selectionOwner("CLIPBOARD_MANAGER") != XCB_WINDOW_NONE; }, 30));
    QImage picture(2000, 1500, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int column = 0; column < picture.width(); ++column) {
            picture.setPixel(column, y, qRgb(column % 256, y % 256, (column * y) % 256));
        }
    }
    const std::string path = session().folder() + "/photo.jpg";
    ASSERT_TRUE(picture.save(QString::fromStdString(path)));
    session().writeDefaults("{\"ClotheslinePaths\": [\"" + path + "\"]}");
    constexpr int middle = 640;
    x().movePointer(middle, 600);
    Program& rookBay = startRookBay();
    x().movePointer(middle, 2);
    ASSERT_TRUE(waitUntil([&] { return !x().viewableOfClass(panelClass).empty(); }, 10));
    EXPECT_TRUE(staysTrue([&] { return !x().viewableOfClass(panelClass).empty(); }, 0.8));
    const xcb_window_t nobody = x().selectionOwner("CLIPBOARD");
    x().click(middle, 120);
    ASSERT_TRUE(waitUntil([&] { return x().selectionOwner("CLIPBOARD") != nobody; }, 10));
    const double start = monotonicNow();
    rookBay.signal(SIGTERM);
    EXPECT_EQ(rookBay.waitForExit(), 0);
    EXPECT_LT(monotonicNow() - start, 3);
    EXPECT_EQ(paste("text/uri-list"), "file://" + path + "\r\n") << "the rest comes in any case";
    const std::string png = paste("image/png");
    EXPECT_EQ(QImage::fromData(reinterpret_cast<const uchar*>(png.data()), static_cast<int>(png.size()), "PNG").size(),
              picture.size());
}

TEST_F(ClipboardProgramsTest, AManagerThatNeverAnswersDoesntHoldUpTheQuit) {
    // It owns the manager's selection, is silent when it is asked to save, and keeps what was copied all the same.
    session().start({"xfce4-clipman"});
    ASSERT_TRUE(waitUntil([&] { return x().selectionOwner("CLIPBOARD_MANAGER") != XCB_WINDOW_NONE; }, 30));
    Program& rookBay = startRookBay();
    xclip("first");
    ASSERT_TRUE(waitForNewest("first"));
    xclip("second");
    ASSERT_TRUE(waitForNewest("second"));
    chooseEntry(XKB_KEY_2);
    ASSERT_EQ(paste(), "first");
    const double start = monotonicNow();
    rookBay.signal(SIGTERM);
    EXPECT_EQ(rookBay.waitForExit(), 0);
    EXPECT_LT(monotonicNow() - start, 1.5);
    EXPECT_TRUE(waitUntil([&] { return paste() == "first"; }));
}

} // namespace

} // namespace rb
