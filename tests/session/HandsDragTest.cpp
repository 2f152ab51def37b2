#include "tests/session/HandsTest.h"

#include <QUrl>

#include <csignal>
#include <sys/mount.h>

// Drags between the line of the real program and other people's programs, in both directions.
namespace rb {

namespace {

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

// Both directions with a file manager, which draws the first file of its folder at a known place.
class FileManagers : public HandsTest {
protected:
    void goToAndFro(const std::string& program, int theirX, int theirY) {
        const std::string file = makeFile("notes.txt");
        const std::string copied = makeFile("copied.txt");
        const std::string theirs = makeFile("folder/a.txt");
        hang({file, copied});
        ASSERT_TRUE(openFileManager(path("folder"), program));
        comeDown();
        x().pressKey(controlKey);
        x().dragTo(cardX(1, 2), cardHeight, 850, 640);
        x().releaseButton();
        EXPECT_TRUE(waitUntil([&] { return fs::exists(path("folder/copied.txt")); }, patience));
        x().releaseKey(controlKey);
        EXPECT_TRUE(staysTrue([&] { return hanging() == std::vector<std::string>{file, copied}; }, 1));
        EXPECT_TRUE(fs::exists(copied));

        comeDown();
        x().dragTo(cardX(0, 2), cardHeight, 850, 640);
        x().tapKey(escapeKey);
        x().releaseButton();
        EXPECT_TRUE(staysTrue([&] { return fs::exists(file) && hanging().size() == 2; }, 1));

        // The first file of theirs to the top of the screen.
        x().dragTo(theirX, theirY, middleOfScreen, 14);
        EXPECT_TRUE(waitUntil([&] { return lineShows(); }, patience));
        x().releaseButton();
        EXPECT_TRUE(waitForHanging({file, copied, theirs}));
        EXPECT_TRUE(fs::exists(theirs));
    }
};

TEST_F(FileManagers, ThunarTakesAndGives) {
    goToAndFro("thunar", 512, 545);
    comeDown();
    x().dragTo(cardX(0, 3), cardHeight, 850, 640);
    x().releaseButton();
    EXPECT_TRUE(
        waitUntil([&] { return fs::exists(path("folder/notes.txt")) && !fs::exists(path("notes.txt")); }, patience));
    EXPECT_TRUE(waitForHanging({path("copied.txt"), path("folder/a.txt")})) << "the card went with its file";
}

TEST_F(FileManagers, PCManFMQtTakesAndGives) {
    goToAndFro("pcmanfm-qt", 512, 545);
}

TEST_F(FileManagers, TheCopyKeyCountsAllThroughTheDrag) {
    const std::string file = makeFile("notes.txt");
    fs::create_directories(path("folder"));
    hang({file});
    ASSERT_TRUE(openFileManager(path("folder")));
    comeDown();
    // Pressed only over the target, without another move of the hand.
    x().dragTo(middleOfScreen, cardHeight, 850, 640);
    x().pressKey(controlKey);
    EXPECT_TRUE(staysTrue([&] { return fs::exists(file); }, 0.5));
    x().releaseButton();
    EXPECT_TRUE(waitUntil([&] { return fs::exists(path("folder/notes.txt")); }, patience));
    x().releaseKey(controlKey);
    EXPECT_TRUE(staysTrue([&] { return fs::exists(file) && hanging() == std::vector<std::string>{file}; }, 1));
    fs::remove(path("folder/notes.txt"));

    // And held at the beginning alone.
    comeDown();
    x().pressKey(controlKey);
    x().dragTo(middleOfScreen, cardHeight, 850, 640);
    x().releaseKey(controlKey);
    EXPECT_TRUE(staysTrue([&] { return fs::exists(file); }, 0.5));
    x().releaseButton();
    EXPECT_TRUE(waitUntil([&] { return fs::exists(path("folder/notes.txt")) && !fs::exists(file); }, patience));
    EXPECT_TRUE(waitForHanging({}));
}

TEST_F(HandsTest, DraggedTextNeverOpensTheLine) {
    hang({makeFile("notes.txt")});
    x().movePointer(middleOfScreen, 600);
    ASSERT_TRUE(waitUntil([&] { return !lineShows(); }, patience));
    writeFile(path("text"), std::string(400, 'w'));
    session().start({"yad", "--text-info", "--wrap", "--filename=" + path("text"), "--title=editor", "--no-buttons"});
    ASSERT_TRUE(place("yad", 100, 400, 500, 300));
    x().click(300, 450);
    ASSERT_TRUE(waitUntil([&] { return x().hasFocus(x().viewableOfClass("yad").front().window); }, patience));
    x().tapKey('a', {controlKey});
    bool shown = false;
    x().dragTo(300, 440, middleOfScreen, 14);
    EXPECT_NE(x().selectionOwner("XdndSelection"), 0U) << "it is really dragged";
    shown = !staysTrue([&] { return !lineShows() && !catcherShows(); }, 1);
    x().releaseButton();
    EXPECT_FALSE(shown);
    // A file name as a text is a text, too.
    Program& program = startDraggingProgram(path("notes.txt"), "text/plain", "c");
    dragFromProgram(middleOfScreen, 14);
    EXPECT_NE(program.output().find("dragging"), std::string::npos);
    EXPECT_TRUE(staysTrue([&] { return !lineShows() && !catcherShows(); }, 1));
    x().releaseButton();
}

TEST_F(HandsTest, ASourceThatDiesOrCancelsTakesTheCatcherAlong) {
    hang({makeFile("notes.txt")});
    x().movePointer(middleOfScreen, 600);
    const std::string uri = "file://" + makeFile("other.txt") + "\r\n";
    const auto lineIsGone = [&] { return waitUntil([&] { return !catcherShows() && !lineShows(); }, patience); };
    ASSERT_TRUE(lineIsGone());
    Program& doomed = startDraggingProgram(uri, "text/uri-list", "cml");
    dragFromProgram(middleOfScreen, 14);
    ASSERT_TRUE(waitUntil([&] { return catcherShows() && lineShows(); }, patience));
    doomed.signal(SIGKILL);
    doomed.waitForExit(patience);
    EXPECT_TRUE(waitUntil([&] { return !catcherShows(); }, patience)) << "the button is still down";
    x().movePointer(middleOfScreen, 600);
    x().releaseButton();
    EXPECT_TRUE(lineIsGone());

    Program& program = startDraggingProgram(uri, "text/uri-list", "cml");
    dragFromProgram(middleOfScreen, 14);
    ASSERT_TRUE(waitUntil([&] { return catcherShows() && lineShows(); }, patience));
    x().tapKey(escapeKey);
    EXPECT_TRUE(waitUntil([&] { return !catcherShows(); }, patience));
    x().movePointer(middleOfScreen, 600);
    x().releaseButton();
    EXPECT_TRUE(lineIsGone());
    EXPECT_EQ(hanging().size(), 1U);
    // The next one counts as ever.
    ASSERT_TRUE(waitUntil([&] { return program.output().find("done nothing") != std::string::npos; }, patience));
    dragFromProgram(middleOfScreen, 14);
    ASSERT_TRUE(waitUntil([&] { return lineShows(); }, patience));
    x().releaseButton();
    EXPECT_TRUE(waitForHanging({path("notes.txt"), path("other.txt")}));
}

TEST_F(HandsTest, OddAddressesInADropAreLeftOutAndTenThousandDoNoHarm) {
    hang({});
    const std::string good = makeFile("a b%.txt");
    const std::string uri = QUrl::fromLocalFile(QString::fromStdString(good)).toEncoded().toStdString();
    const std::string odd =
        "# a comment\r\nhttps://example.org/x\r\nsftp://host/etc/passwd\r\nfile://elsewhere/etc/passwd"
        "\r\nfile:///bad%zz%\r\nfile:///nul%00byte\r\nfile:relative\r\n\r\n" +
        std::string(70'000, 'x') + "\r\nfile:///missing/file\r\n" + uri + "\r\n";
    Program& first = startDraggingProgram(odd, "text/uri-list", "cm");
    dragFromProgram(middleOfScreen, 14);
    ASSERT_TRUE(waitUntil([&] { return lineShows(); }, patience));
    x().releaseButton();
    EXPECT_TRUE(waitForHanging({good}));
    EXPECT_TRUE(waitUntil([&] { return first.output().find("done copy") != std::string::npos; }, patience));
    first.end();

    // 10,000 addresses, of which nine are files, at the end.
    x().movePointer(middleOfScreen, 600);
    std::string many;
    std::vector<std::string> expected{good};
    for (int i = 0; i < 10'000; ++i) {
        std::string file = "/missing/file number " + std::to_string(i);
        if (i < 3) {
            file = makeFile("many/" + std::to_string(i));
            expected.push_back(file);
        }
        many += QUrl::fromLocalFile(QString::fromStdString(file)).toEncoded().toStdString() + "\r\n";
    }
    startDraggingProgram(many, "text/uri-list", "cm");
    dragFromProgram(middleOfScreen, 14);
    ASSERT_TRUE(waitUntil([&] { return lineShows(); }, patience));
    x().releaseButton();
    EXPECT_TRUE(waitForHanging(expected));
    // It works all the while.
    hover(cardX(0, 4));
    x().click(cardX(0, 4), cardHeight);
    EXPECT_TRUE(waitUntil([&] { return !pasted("text/uri-list").empty(); }, patience));
}

// A folder card of another file system, where the machine lets us have one.
class OtherDisks : public HandsTest {
protected:
    // The other program's file on the only card.
    void dropOnTheFolder() {
        dragFromProgram(middleOfScreen, 14);
        ASSERT_TRUE(waitUntil([&] { return lineShows(); }, patience));
        for (const int py : {50, 80, 100, cardHeight}) {
            EXPECT_TRUE(staysTrue([&] { return lineShows(); }, 0.2));
            x().movePointer(middleOfScreen, py);
        }
        EXPECT_TRUE(staysTrue([&] { return lineShows(); }, 0.5));
        x().releaseButton();
    }
    ~OtherDisks() override { umount(disk().c_str()); }
    std::string disk() { return path("disk"); }
    bool haveDisk(const char* options) {
        fs::create_directories(disk());
        return mount("none", disk().c_str(), "tmpfs", 0, options) == 0;
    }
    std::size_t onDisk() { return static_cast<std::size_t>(std::distance(fs::directory_iterator(disk()), {})); }
};

TEST_F(OtherDisks, AFullOrReadOnlyOneLosesNothing) {
    if (!haveDisk("size=64k")) {
        GTEST_SKIP() << "nothing can be mounted here";
    }
    const std::string file = makeFile("large.txt", std::string(500'000, 'x'));
    hang({file, disk()});
    x().dragTo(cardX(0, 2), cardHeight, cardX(1, 2), cardHeight);
    x().releaseButton();
    const auto failures = [&](const char* reason) { return session().logs().find(reason) != std::string::npos; };
    EXPECT_TRUE(waitUntil([&] { return failures("No space left"); }, patience));
    EXPECT_EQ(readFile(file)->size(), 500'000U);
    EXPECT_EQ(onDisk(), 0U);
    ASSERT_EQ(mount("none", disk().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "size=64k"), 0);
    comeDown();
    x().dragTo(cardX(0, 2), cardHeight, cardX(1, 2), cardHeight);
    x().releaseButton();
    EXPECT_TRUE(waitUntil([&] { return failures("Read-only"); }, patience));
    EXPECT_EQ(readFile(file)->size(), 500'000U);
    EXPECT_EQ(hanging(), (std::vector<std::string>{file, disk()}));
}

TEST_F(OtherDisks, AnotherProgramsFilesMoveWhileTheLineGoesOnAndAQuitLosesNothing) {
    if (!haveDisk("size=3g")) {
        GTEST_SKIP() << "nothing can be mounted here";
    }
    constexpr std::uintmax_t size = 1U << 30U;
    const std::string file = makeFile("huge.bin", "beginning");
    fs::resize_file(file, size);
    session().writeDefaults("{\"ClotheslinePaths\": [\"" + disk() + "\"]}");
    x().movePointer(middleOfScreen, 600);
    Program& rookbay = startRookBay();
    Program& source = startDraggingProgram("file://" + file + "\r\n", "text/uri-list", "mcl");
    dropOnTheFolder();
    ASSERT_TRUE(waitUntil([&] { return onDisk() == 1; }, patience)) << "the copy is being made";
    EXPECT_TRUE(waitUntil([&] { return source.output().find("done ") != std::string::npos; }, 1))
        << "the source isn't kept waiting";
    rookbay.signal(SIGTERM);
    EXPECT_EQ(rookbay.waitForExit(patience), 0);
    EXPECT_EQ(onDisk(), 0U) << "no half file";
    EXPECT_EQ(fs::file_size(file), size);

    // The same, killed: the next start cleans up.
    Program& second = startRookBay();
    dropOnTheFolder();
    ASSERT_TRUE(waitUntil([&] { return onDisk() == 1; }, patience));
    second.signal(SIGKILL);
    second.waitForExit(patience);
    EXPECT_EQ(fs::file_size(file), size);
    x().movePointer(middleOfScreen, 600);
    startRookBay();
    EXPECT_TRUE(waitUntil([&] { return onDisk() == 0; }, patience));

    // And to the end.
    dropOnTheFolder();
    EXPECT_TRUE(waitUntil([&] { return !fs::exists(file); }, 3 * patience));
    EXPECT_EQ(fs::file_size(disk() + "/huge.bin"), size);
    EXPECT_EQ(onDisk(), 1U);
}

} // namespace

} // namespace rb
