#include "tests/clothesline/HandsFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Gestures : public HandsTest {};

TEST_F(Gestures, AClickCopiesOnceADoubleClickIsRuledOut) {
    const auto card = hang(1)[0];
    click(card);
    desktop.advance(0.45);
    EXPECT_LT(card->pill->presentation().opacity, 0.1);
    desktop.advance(0.1);
    EXPECT_TRUE(pillShows(card));
    EXPECT_FALSE(card->pressed);
    EXPECT_THAT(desktop.pasteboard().contents().files, ElementsAre("/Users/rb/a"));
}

TEST_F(Gestures, APictureIsCopiedAsFileAndAsPng) {
    const auto png = [&](const std::string& path, Size size) {
        desktop.files().addImage(path, size);
        const auto card = line->hangURL(path, {.quietly = true});
        click(card);
        desktop.advance(0.6);
        EXPECT_THAT(desktop.pasteboard().contents().files, ElementsAre(path));
        const auto& data = desktop.pasteboard().contents().data;
        const auto found = data.find(PasteboardType::Png);
        return found == data.end() ? "none" : std::string(found->second.begin(), found->second.end());
    };
    EXPECT_EQ(png("/Users/rb/x.PNG", {40, 40}), "bytes of /Users/rb/x.PNG");
    EXPECT_EQ(png("/Users/rb/y.jpg", {40, 40}), "PNG of bytes of /Users/rb/y.jpg");
    EXPECT_EQ(png("/Users/rb/broken.png", {}), "none") << "what can't be decoded is only a file";
}

// A picture that takes five seconds to make.
class SlowPictures : public Gestures {
protected:
    SlowPictures() { desktop.files().addImage(path, {4000, 3000}); }
    void copyIt() {
        card = line->hangURL(path, {.quietly = true});
        over(card);
        desktop.runLoop().setBackgroundDelay(5);
        hand().click(over(card));
        desktop.advance(0.6);
    }
    bool offersPng() {
        std::vector<std::string> offered;
        (void)desktop.pasteboard().offeredTypes({PasteboardType::Png},
                                                [&](std::vector<std::string> types) { offered = std::move(types); });
        return !offered.empty();
    }
    // Asks, and says what came after that many seconds.
    std::string pastedWithin(double seconds) {
        std::string got = "nothing yet";
        const Handle reading = desktop.pasteboard().readData(PasteboardType::Png, 1000, [&](const SharedBytes& bytes) {
            got = bytes ? std::string(bytes->begin(), bytes->end()) : "refused";
        });
        desktop.advance(seconds);
        return got;
    }

    const std::string path = "/Users/rb/photo.jpg";
    RBPegItemRef card;
};

TEST_F(SlowPictures, TheFileIsThereAtOnceAndThePictureWhenItIsMade) {
    copyIt();
    EXPECT_THAT(desktop.pasteboard().contents().files, ElementsAre(path));
    EXPECT_TRUE(pillShows(card)) << "the copy is done";
    EXPECT_TRUE(offersPng());
    EXPECT_EQ(pastedWithin(1), "nothing yet");
    EXPECT_EQ(pastedWithin(5), "PNG of bytes of " + path);
    EXPECT_EQ(pastedWithin(0), "PNG of bytes of " + path) << "as often as anyone asks";
    EXPECT_EQ(desktop.thumbnails().decoded(), 1) << "and made once";
}

TEST_F(SlowPictures, WhatWasCopiedIsPastedWhateverBecomesOfTheFile) {
    copyIt();
    line->actions().trashItem(card);
    EXPECT_FALSE(desktop.files().facts(path).exists);
    EXPECT_EQ(pastedWithin(6), "PNG of bytes of " + path);
    desktop.runLoop().setBackgroundDelay(0);
    desktop.files().addImage(path, {4000, 3000});
    copyIt();
    desktop.files().change(path);
    EXPECT_EQ(pastedWithin(6), "refused") << "rather than something else";
    EXPECT_THAT(desktop.pasteboard().contents().files, ElementsAre(path));
}

TEST_F(SlowPictures, OneThatTurnsOutBrokenIsRefusedAndOfferedNoLonger) {
    copyIt();
    desktop.thumbnails().setDamaged(true);
    EXPECT_TRUE(offersPng());
    EXPECT_EQ(pastedWithin(6), "refused");
    EXPECT_FALSE(offersPng());
    EXPECT_THAT(desktop.pasteboard().contents().files, ElementsAre(path));
}

TEST_F(SlowPictures, AnotherCopyGivesUpTheMaking) {
    copyIt();
    line->actions().copyPathOf(*card);
    desktop.advance(6);
    EXPECT_EQ(desktop.pasteboard().contents().text, path);
    EXPECT_FALSE(offersPng());
    EXPECT_EQ(desktop.thumbnails().decoded(), 0);
}

TEST_F(SlowPictures, WhatNoLongerBeginsLikeAPictureIsOnlyAFile) {
    card = line->hangURL(path, {.quietly = true});
    desktop.files().addImage(path, {});
    hand().click(over(card));
    desktop.advance(0.6);
    EXPECT_FALSE(offersPng());
    EXPECT_THAT(desktop.pasteboard().contents().files, ElementsAre(path));
}

TEST_F(Gestures, ADoubleClickOpensAndNeverCopies) {
    const auto card = hang(1)[0];
    click(card);
    desktop.advance(0.2);
    hand().click(over(card), 2);
    EXPECT_THAT(desktop.workspace().opened(), ElementsAre("/Users/rb/a"));
    desktop.advance(1);
    EXPECT_FALSE(pillShows(card));
    // A third click begins anew, with its own release that is no first click.
    hand().press(over(card), 3);
    EXPECT_TRUE(card->pressed);
    hand().release();
    desktop.advance(1);
    EXPECT_EQ(desktop.workspace().opened().size(), 1U);
}

TEST_F(Gestures, WherePanelsTakeTheMouseInPartsNoClickFallsThrough) {
    desktop.panels().letPanelsHaveMouseAreas();
    const auto card = hang(1)[0];
    reveal();
    desktop.advance(0.1);
    const Rect frame = card->peg.frame.offset(line->panelFrame().x, line->panelFrame().y);
    const Point onCard{frame.midX(), frame.midY()};
    const Point beside{frame.maxX() + 40, frame.midY()};
    EXPECT_EQ(desktop.panels().under(beside), nullptr);
    hand().press(onCard); // before any look at the pointer
    EXPECT_TRUE(card->pressed);
    desktop.advance(0.05);
    EXPECT_NE(desktop.panels().under(beside), nullptr) << "a card in the hand is never dropped through the line";
    hand().release();
    desktop.advance(0.6);
    EXPECT_TRUE(pillShows(card));
    EXPECT_EQ(desktop.panels().under(beside), nullptr);
    desktop.pointer().moveTo({700, 300});
    desktop.advance(2);
    EXPECT_EQ(desktop.panels().under(onCard), nullptr) << "the line is up again";
}

TEST_F(Gestures, FourPointsAreStillAClickAndMoreIsADrag) {
    const auto card = hang(1)[0];
    Point at = over(card);
    hand().press(at);
    hand().dragTo({at.x + 4, at.y});
    EXPECT_FALSE(desktop.panels().outgoingDrag());
    hand().release();
    desktop.advance(0.6);
    EXPECT_TRUE(pillShows(card));

    at = over(card);
    hand().press(at);
    hand().dragTo({at.x + 3, at.y - 2.7}); // 4.04 as the crow flies
    ASSERT_TRUE(desktop.panels().outgoingDrag());
    EXPECT_FALSE(card->pressed);
    desktop.advance(1);
    EXPECT_FALSE(desktop.previewPanel().isVisible()) << "a drag is no long press";
}

TEST_F(Gestures, HoldingStillPreviewsAndTheReleaseDoesNothingMore) {
    const auto cards = hang(3);
    const Point at = over(cards[1]);
    hand().press(at);
    EXPECT_TRUE(cards[1]->pressed);
    desktop.advance(0.44);
    EXPECT_FALSE(desktop.previewPanel().isVisible());
    desktop.advance(0.02);
    EXPECT_EQ(desktop.previewPanel().shown(), "/Users/rb/b");
    EXPECT_TRUE(desktop.application().isActive());
    EXPECT_FALSE(cards[1]->pressed);
    hand().dragTo({at.x + 30, at.y});
    EXPECT_FALSE(desktop.panels().outgoingDrag());
    hand().release();
    desktop.advance(1);
    EXPECT_FALSE(pillShows(cards[1]));
    EXPECT_TRUE(line->quickLookVisible());
    desktop.pointer().moveTo({700, 300});
    desktop.advance(2);
    EXPECT_TRUE(line->revealed()) << "it stays while its file is looked at";
}

TEST_F(Gestures, AFirmPressPreviewsAtOnceButOnlyOnce) {
    const auto card = hang(1)[0];
    hand().press(over(card));
    hand().pressHarder(1);
    EXPECT_FALSE(desktop.previewPanel().isVisible());
    hand().pressHarder(2);
    EXPECT_TRUE(desktop.previewPanel().isVisible());
    desktop.previewPanel().close();
    hand().pressHarder(2);
    EXPECT_FALSE(desktop.previewPanel().isVisible());
    hand().release();
}

TEST_F(Gestures, TheArrowKeysWalkTheLineAndStopAtItsEnds) {
    const auto cards = hang(2);
    line->quickLookItem(cards[0]);
    EXPECT_TRUE(desktop.previewPanel().press({.keyCode = 123}));
    EXPECT_EQ(desktop.previewPanel().shown(), "/Users/rb/a");
    EXPECT_TRUE(desktop.previewPanel().press({.keyCode = 124}));
    EXPECT_TRUE(desktop.previewPanel().press({.keyCode = 124}));
    EXPECT_EQ(desktop.previewPanel().shown(), "/Users/rb/b");
    EXPECT_FALSE(desktop.previewPanel().press({.keyCode = 49})) << "other keys are the panel's";
}

TEST_F(Gestures, TheCornerTakesTheCardDownAndLeavesTheFile) {
    const auto cards = hang(2);
    const Rect frame = cards[0]->peg.frame;
    const Point corner{27.5 - frame.width / 2, frame.height / 2 - 27.5};
    const Point beside{corner.x + 1, corner.y};
    over(cards[0]);
    hand().press(over(cards[0], beside));
    hand().release();
    EXPECT_EQ(line->items().size(), 2U);
    hand().click(over(cards[0], corner));
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/b"));
    EXPECT_TRUE(desktop.files().facts("/Users/rb/a").exists);
    EXPECT_THAT(desktop.sounds().heard(), ElementsAre(VirtualSounds::Sound{"Pop", 0.25}));
}

TEST_F(Gestures, ACardWhoseFileIsGoneLeavesInsteadOfActing) {
    const auto cards = hang(2);
    click(cards[0]);
    desktop.files().remove("/Users/rb/a");
    desktop.advance(0.6);
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/b"));
    const Point at = over(cards[1]);
    hand().press(at);
    desktop.files().remove("/Users/rb/b");
    hand().dragTo({at.x, at.y - 20});
    hand().release();
    EXPECT_THAT(paths(), IsEmpty());
    EXPECT_FALSE(desktop.panels().outgoingDrag());
}

class ContextMenu : public HandsTest {};

TEST_F(ContextMenu, OffersWhatFitsTheCard) {
    const auto cards = hang(3);
    hand().pressRight(over(cards[0]));
    EXPECT_TRUE(line->menuShowing());
    EXPECT_THAT(contextMenuTitles(), ElementsAre("复制", "打开", "快速查看", "在 Finder 中显示", "拷贝路径", "-",
                                                 "取下（文件保留）", "移到废纸篓", "取下左边全部", "取下右边全部"));
    Menu& menu = *desktop.panels().contextMenu();
    EXPECT_FALSE(menu.isEnabled(*menus::findItem(menu, "取下左边全部")));
    EXPECT_TRUE(menu.isEnabled(*menus::findItem(menu, "取下右边全部")));
    desktop.pointer().moveTo({700, 300});
    desktop.advance(3);
    EXPECT_TRUE(line->revealed()) << "it stays while the menu is open";
    desktop.panels().closeContextMenu();
    desktop.advance(1);
    EXPECT_FALSE(line->revealed());
}

TEST_F(ContextMenu, DoesWhatItSays) {
    const auto cards = hang(4);
    choose(cards[1], "在 Finder 中显示");
    EXPECT_THAT(desktop.workspace().revealed(), ElementsAre("/Users/rb/b"));
    choose(cards[1], "拷贝路径");
    EXPECT_EQ(desktop.pasteboard().contents().text, "/Users/rb/b");
    choose(cards[1], "快速查看");
    EXPECT_EQ(desktop.previewPanel().shown(), "/Users/rb/b");
    choose(cards[1], "取下右边全部");
    desktop.advance(0.2);
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/a", "/Users/rb/b"));
    choose(cards[1], "取下左边全部");
    desktop.advance(0.2);
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/b"));
    desktop.sounds().clear();
    choose(cards[1], "移到废纸篓");
    EXPECT_THAT(paths(), IsEmpty());
    EXPECT_THAT(desktop.fileOperations().trashed(), ElementsAre("/Users/rb/b"));
    EXPECT_THAT(desktop.sounds().heard(), ElementsAre(VirtualSounds::Sound{"drag to trash", 1}));
}

TEST_F(ContextMenu, AFailureIsToldAndTheCardStays) {
    const auto card = hang(1)[0];
    desktop.fileOperations().refuse("the disk is read-only");
    choose(card, "移到废纸篓");
    EXPECT_EQ(line->items().size(), 1U);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/a").exists);
    EXPECT_EQ(desktop.sounds().beeps(), 1);
    EXPECT_THAT(desktop.log().lines(),
                testing::Contains("Rook Bay: could not trash /Users/rb/a: the disk is read-only"));
    line->actions().saveToDesktop(card);
    EXPECT_EQ(line->items().size(), 1U);
    EXPECT_EQ(desktop.sounds().beeps(), 2);
}

TEST_F(ContextMenu, SavingToTheDesktopTakesTheFirstFreeName) {
    const std::string names[] = {"Shot.png", "Name", ".hidden"};
    for (const std::string& name : names) {
        desktop.files().addDocument("/Users/rb/" + name);
        desktop.files().addDocument("/Users/rb/Desktop/" + name);
    }
    desktop.files().addDanglingLink("/Users/rb/Desktop/Shot 2.png");
    for (const std::string& name : names) {
        line->actions().saveToDesktop(line->hangURL("/Users/rb/" + name, {}));
    }
    EXPECT_TRUE(desktop.files().facts("/Users/rb/Desktop/Shot 3.png").exists);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/Desktop/Name 2").exists);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/Desktop/.hidden 2").exists);
    EXPECT_THAT(paths(), IsEmpty());
}

TEST_F(ContextMenu, ANameTakenAtTheLastMomentIsLeftAlone) {
    desktop.files().addDocument("/Users/rb/Shot.png");
    const auto card = line->hangURL("/Users/rb/Shot.png", {});
    desktop.fileOperations().before([&] { desktop.files().addFolder("/Users/rb/Desktop/Shot.png"); });
    line->actions().saveToDesktop(card);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/Desktop/Shot.png").isDirectory);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/Desktop/Shot 2.png").exists);
}

} // namespace
} // namespace rb
