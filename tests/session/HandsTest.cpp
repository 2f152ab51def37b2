#include "tests/session/HandsTest.h"

#include <QImage>

// Clicks, menus and the preview on the cards of the real program.
namespace rb {

namespace {

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

TEST_F(HandsTest, AClickTheMomentThePointerReachesACardIsNotMissed) {
    const std::string file = makeFile("notes.txt");
    hang({file});
    x().click(middleOfScreen, cardHeight);
    EXPECT_TRUE(waitUntil([&] { return pasted("text/uri-list").find("notes.txt") != std::string::npos; }, patience));
}

TEST_F(HandsTest, ACopiedCardPastesIntoAFileManager) {
    hang({makeFile("a b.txt")});
    fs::create_directories(path("folder"));
    ASSERT_TRUE(openFileManager(path("folder")));
    comeDown();
    hover(middleOfScreen);
    x().click(middleOfScreen, cardHeight);
    ASSERT_TRUE(waitUntil([&] { return !pasted("text/uri-list").empty(); }, patience));
    x().click(850, 690);
    ASSERT_TRUE(waitUntil([&] { return x().hasFocus(x().viewableOfClass("thunar").front().window); }, patience));
    x().tapKey('v', {controlKey});
    EXPECT_TRUE(waitUntil([&] { return readFile(path("folder/a b.txt")) == "text"; }, patience));
    EXPECT_EQ(readFile(path("a b.txt")), "text");
}

} // namespace

} // namespace rb
