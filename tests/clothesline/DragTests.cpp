#include "tests/clothesline/HandsFixture.h"

#include "clothesline/LineGeometry.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Point below{700, 400};
constexpr Point topEdge{700, 935};
constexpr Point inCatcher{700, 920};

class DropIn : public HandsTest {
protected:
    void SetUp() override { desktop.advance(1); }
    VirtualPanel* catcher() {
        for (VirtualPanel* panel : desktop.panels().visible()) {
            if (panel->spec().level == 101) {
                return panel;
            }
        }
        return nullptr;
    }
    std::string hint() {
        const auto& slide = desktop.panels().visible().front()->rootLayer()->sublayers().back();
        return std::get<TextContent>(slide->sublayers().back()->sublayers().front()->model().content).text;
    }
};

TEST_F(DropIn, AFileDragShowsTheCatcherOnThePointersScreen) {
    hand().beginForeignDrag(below, {.files = {"/Users/rb/x"}});
    desktop.advance(0.1);
    ASSERT_NE(catcher(), nullptr);
    EXPECT_EQ(catcher()->frame(), (Rect{0, 908, 1512, 74}));
    EXPECT_EQ(catcher()->spec().collectionBehavior, 0x151U);
    EXPECT_FALSE(line->revealed());
    desktop.advance(0.2);
    EXPECT_NEAR(catcher()->rootLayer()->presentation().opacity, 1, 1e-9);
    hand().release();
    desktop.advance(0.1);
    EXPECT_EQ(catcher(), nullptr);
}

TEST_F(DropIn, OnlyFilesAndUnknownDragsCountAndTheyAreLookedAtOnce) {
    hand().beginForeignDrag(below, {.types = {"public.utf8-plain-text"}});
    hand().dragTo(topEdge);
    desktop.advance(1);
    EXPECT_EQ(catcher(), nullptr);
    EXPECT_FALSE(line->revealed()) << "a text never opens the line";
    EXPECT_EQ(desktop.dragPasteboard().examinations(), 1);
    hand().release();
    hand().beginForeignDrag(below, {.types = {}});
    desktop.advance(0.1);
    EXPECT_NE(catcher(), nullptr);
    hand().release();
    hand().press(below);
    desktop.advance(0.3);
    EXPECT_EQ(catcher(), nullptr) << "a press alone is no drag";
    hand().release();
}

TEST_F(DropIn, LingeringAtTheTopOpensTheLineAndLettingGoElsewhereClosesIt) {
    hand().beginForeignDrag(below, {.files = {"/Users/rb/x"}});
    desktop.advance(0.1);
    // Beside the catcher's own doing: the pointer lies at the edge, but nothing has entered.
    desktop.pointer().moveTo({700, 932});
    desktop.advance(0.08);
    EXPECT_FALSE(line->revealed());
    desktop.advance(0.1);
    ASSERT_TRUE(line->revealed());
    EXPECT_TRUE(line->dragActive());
    EXPECT_EQ(hint(), "松手，挂到晾衣绳上");
    desktop.advance(0.3);
    EXPECT_NEAR(line->dropGlow()->presentation().opacity, 1, 1e-9);
    desktop.pointer().moveTo(below);
    desktop.advance(2);
    EXPECT_TRUE(line->revealed()) << "open as long as the drag lasts";
    hand().release();
    desktop.advance(0.5);
    EXPECT_FALSE(line->dragActive());
    EXPECT_EQ(hint(), "把文件、文件夹或图片拖到屏幕顶部");
    EXPECT_NEAR(line->dropGlow()->presentation().opacity, 0, 1e-9);
    desktop.advance(1);
    EXPECT_FALSE(line->revealed());
}

TEST_F(DropIn, ADragThatEndsWithTheButtonDownTakesTheCatcherAlong) {
    hand().beginForeignDrag(below, {.files = {"/Users/rb/x"}});
    desktop.advance(0.1);
    desktop.pointer().moveTo({700, 932});
    desktop.advance(0.3);
    ASSERT_TRUE(line->dragActive());
    desktop.dragPasteboard().end(); // Escape, or its program died
    desktop.advance(0.1);
    EXPECT_EQ(catcher(), nullptr);
    EXPECT_FALSE(line->dragActive());
    hand().dropElsewhere(NoDragOperation);
    hand().release();
    hand().beginForeignDrag(below, {.files = {"/Users/rb/x"}});
    desktop.advance(0.1);
    EXPECT_NE(catcher(), nullptr) << "the next one is seen again";
    hand().release();
}

TEST_F(DropIn, SwitchedOffNothingShows) {
    desktop.userDefaults().setObject("ClotheslineDragReveal", false);
    hand().beginForeignDrag(below, {.files = {"/Users/rb/x"}});
    hand().dragTo(topEdge);
    desktop.advance(1);
    EXPECT_EQ(catcher(), nullptr);
    EXPECT_FALSE(line->revealed());
    hand().release();
}

TEST_F(DropIn, ADropHangsEveryFileInShortStepsWithOneSound) {
    const std::vector<std::string> files{"/d/1", "/d/2", "/d/3", "/d/4", "/d/5"};
    addDocuments(files);
    hand().beginForeignDrag(below, {.files = files});
    desktop.advance(0.1);
    hand().dragTo(inCatcher);
    EXPECT_EQ(hand().offeredOperation(), std::uint32_t{GenericOperation});
    EXPECT_TRUE(line->revealed());
    EXPECT_DOUBLE_EQ(std::get<ShapeContent>(line->ropeCore()->model().content).lineWidth, 2.4);
    hand().release();
    EXPECT_TRUE(hand().dropTaken());
    EXPECT_EQ(catcher(), nullptr);
    EXPECT_DOUBLE_EQ(std::get<ShapeContent>(line->ropeCore()->model().content).lineWidth, 1.2);
    for (std::size_t hung = 1; hung <= files.size(); ++hung) {
        desktop.advance(hung == 1 ? 0.04 : 0.08);
        EXPECT_EQ(line->items().size(), hung);
    }
    EXPECT_THAT(desktop.sounds().heard(), ElementsAre(VirtualSounds::Sound{"Tink", 0.35}));
    EXPECT_EQ(savedPaths(), files);
}

TEST_F(DropIn, TheSourceDecidesWhatIsAllowed) {
    const auto offered = [&](std::uint32_t allowed, std::vector<std::string> files) {
        hand().beginForeignDrag(below, {.files = std::move(files), .operations = allowed});
        desktop.advance(0.1);
        hand().dragTo(inCatcher);
        const std::uint32_t operation = hand().offeredOperation();
        hand().dropElsewhere(NoDragOperation);
        hand().release();
        desktop.advance(1);
        return operation;
    };
    EXPECT_EQ(offered(CopyOperation | LinkOperation, {"/d/1"}), std::uint32_t{LinkOperation});
    EXPECT_EQ(offered(CopyOperation | MoveOperation, {"/d/1"}), std::uint32_t{CopyOperation});
    EXPECT_EQ(offered(MoveOperation, {"/d/1"}), std::uint32_t{NoDragOperation});
    EXPECT_EQ(offered(CopyOperation, {}), std::uint32_t{NoDragOperation}) << "nothing readable";
}

TEST_F(DropIn, FilesThatVanishedAndManyMoreThanFitDoNoHarm) {
    std::vector<std::string> files;
    for (int i = 0; i < 200; ++i) {
        files.push_back("/d/" + std::to_string(i));
    }
    addDocuments({files.begin() + 150, files.end()});
    hand().beginForeignDrag(below, {.files = files});
    desktop.advance(0.1);
    hand().dragTo(inCatcher);
    hand().release();
    desktop.advance(20);
    EXPECT_EQ(line->items().size(), line->capacity());
    EXPECT_EQ(line->items().back()->path, "/d/199");
    EXPECT_TRUE(desktop.files().facts("/d/150").exists) << "what no longer fits is only let go";
}

class DraggedOut : public HandsTest {
protected:
    void pullOut(const RBPegItemRef& card) {
        const Point at = over(card);
        hand().press(at);
        hand().dragTo({at.x, at.y - 10});
    }
};

TEST_F(DraggedOut, TheCardWaitsForItsFile) {
    const auto card = hang(1)[0];
    pullOut(card);
    const auto& drag = desktop.panels().outgoingDrag();
    ASSERT_TRUE(drag);
    EXPECT_EQ(drag->path, "/Users/rb/a");
    EXPECT_EQ(drag->operationsInside, std::uint32_t{MoveOperation});
    EXPECT_EQ(drag->operationsOutside, std::uint32_t{CopyOperation | MoveOperation | DeleteOperation});
    desktop.advance(0.2);
    EXPECT_NEAR(card->card->presentation().opacity, 0.45, 1e-9);
    desktop.pointer().moveTo(below);
    desktop.advance(2);
    EXPECT_TRUE(line->revealed());

    hand().dropElsewhere(MoveOperation); // and the file manager is slow
    desktop.advance(0.4);
    EXPECT_EQ(line->items().size(), 1U);
    EXPECT_NEAR(card->card->presentation().opacity, 1, 1e-9);
    desktop.files().remove("/Users/rb/a");
    desktop.advance(0.3);
    EXPECT_THAT(paths(), IsEmpty());
}

TEST_F(DraggedOut, ACopyACancelAndAClaimedMoveLeaveItHanging) {
    const auto card = hang(1)[0];
    for (const DragOperation operation : {CopyOperation, NoDragOperation, MoveOperation}) {
        pullOut(card);
        hand().dropElsewhere(operation);
        desktop.advance(1.5);
        EXPECT_EQ(line->items().size(), 1U);
        EXPECT_FALSE(line->draggingOut());
        EXPECT_TRUE(desktop.files().facts("/Users/rb/a").exists);
    }
    // Later than anybody waits, but told by the system.
    pullOut(card);
    const auto fileLeft = desktop.panels().outgoingDrag()->fileLeft;
    hand().dropElsewhere(MoveOperation);
    desktop.advance(5);
    desktop.files().remove("/Users/rb/a");
    fileLeft();
    EXPECT_THAT(paths(), IsEmpty());
}

TEST_F(DraggedOut, TheTrashTakesFileAndCard) {
    const auto card = hang(1)[0];
    pullOut(card);
    hand().dropElsewhere(DeleteOperation);
    desktop.advance(0.1);
    EXPECT_THAT(paths(), IsEmpty());
    EXPECT_THAT(desktop.fileOperations().trashed(), ElementsAre("/Users/rb/a"));
}

TEST_F(DraggedOut, TheLineDoesNotCatchItsOwnCards) {
    const auto card = hang(1)[0];
    pullOut(card);
    desktop.dragPasteboard().begin({FileURLDragType});
    hand().dragTo(topEdge);
    desktop.advance(1);
    EXPECT_FALSE(line->dragActive());
    EXPECT_EQ(desktop.panels().visible().size(), 1U);
    hand().release();
    desktop.advance(1);
    EXPECT_EQ(line->items().size(), 1U);
}

class IntoFolders : public DraggedOut {};

TEST_F(IntoFolders, ACardDroppedOnAFolderCardGoesInWithoutFalling) {
    const auto file = hang(1)[0];
    const auto folder = hangFolder("/Users/rb/box");
    desktop.files().addDocument("/Users/rb/box/a");
    pullOut(file);
    hand().dragTo(over(folder));
    EXPECT_EQ(hand().offeredOperation(), std::uint32_t{MoveOperation});
    EXPECT_TRUE(folder->dropTarget);
    desktop.advance(0.3);
    EXPECT_DOUBLE_EQ(folder->glass->presentation().borderWidth, 2.5);
    hand().release();
    desktop.advance(0.3);
    EXPECT_FALSE(folder->dropTarget);
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/box"));
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/a 2").exists);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/a").exists);
    EXPECT_EQ(desktop.panels().visible().size(), 1U) << "nothing falls";
    const auto flash = folder->swing->sublayers().back();
    EXPECT_EQ(std::get<TextContent>(flash->sublayers().front()->model().content).text, "✓ 已放入");
    EXPECT_THAT(desktop.sounds().heard(), ElementsAre(VirtualSounds::Sound{"Tink", 0.35}));
    desktop.advance(1.6);
    EXPECT_EQ(flash->superlayer(), nullptr);
}

TEST_F(IntoFolders, OtherProgramsFilesMoveAndWithOptionCopy) {
    const auto folder = hangFolder("/Users/rb/box");
    desktop.files().addDocument("/d/x");
    desktop.files().addDocument("/d/y");
    const auto offered = [&](std::uint32_t allowed, std::uint32_t held, std::vector<std::string> files) {
        hand().beginForeignDrag(below, {.files = std::move(files), .operations = allowed});
        const Point at = over(folder);
        desktop.pointer().holdModifiers(held);
        hand().dragTo(at);
        return hand().offeredOperation();
    };
    EXPECT_EQ(offered(CopyOperation | MoveOperation, OptionModifier, {"/d/x", "/d/y"}), std::uint32_t{CopyOperation});
    hand().release();
    desktop.advance(0.1);
    EXPECT_TRUE(desktop.files().facts("/d/x").exists);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/x").exists);
    EXPECT_EQ(offered(MoveOperation, OptionModifier, {"/d/x"}), std::uint32_t{MoveOperation});
    hand().dropElsewhere(NoDragOperation);
    hand().release();
    EXPECT_EQ(offered(CopyOperation | MoveOperation, NoModifiers, {"/d/x", "/d/y"}), std::uint32_t{MoveOperation});
    hand().release();
    desktop.advance(0.1);
    EXPECT_FALSE(desktop.files().facts("/d/x").exists);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/x 2").exists);
    const auto flash = folder->swing->sublayers().back();
    EXPECT_EQ(std::get<TextContent>(flash->sublayers().front()->model().content).text, "✓ 已放入 2 项");
}

TEST_F(IntoFolders, NothingGoesIntoItselfBelowItselfOrWhereItIs) {
    const auto folder = hangFolder("/Users/rb/box");
    const auto inner = hangFolder("/Users/rb/box/inner");
    EXPECT_FALSE(line->folderDrops().canGoInto("/Users/rb/box", *folder));
    EXPECT_FALSE(line->folderDrops().canGoInto("/Users/rb/box", *inner));
    EXPECT_FALSE(line->folderDrops().canGoInto("/Users/rb/box/inner/../x", *folder));
    EXPECT_TRUE(line->folderDrops().canGoInto("/Users/rb/boxes", *folder));
    EXPECT_FALSE(line->folderDrops().canGoInto("/Users/rb/x", *hang(1)[0])) << "not a folder";
}

TEST_F(IntoFolders, WhatFailsStaysAndIsTold) {
    const auto folder = hangFolder("/Users/rb/box");
    const auto file = hang(1)[0];
    desktop.fileOperations().refuse("disk full");
    EXPECT_EQ(line->folderDrops().put({file->path}, folder, true), FolderDrops::Outcome::Nothing);
    EXPECT_EQ(line->items().size(), 2U);
    EXPECT_EQ(desktop.sounds().beeps(), 1);
    EXPECT_THAT(desktop.log().lines(),
                testing::Contains("Rook Bay: could not put /Users/rb/a into /Users/rb/box: disk full"));
}

TEST_F(IntoFolders, ACardWaitsDimUntilItsFileHasArrivedOnTheOtherDisk) {
    const auto cards = hang(2);
    const auto folder = hangFolder("/Users/rb/box");
    desktop.fileOperations().setDuration(5);
    pullOut(cards[0]);
    hand().dragTo(over(folder));
    hand().release();
    EXPECT_TRUE(hand().dropTaken());
    desktop.advance(2);
    EXPECT_EQ(line->items().size(), 3U);
    EXPECT_NEAR(cards[0]->card->presentation().opacity, 0.45, 1e-9);
    EXPECT_THAT(desktop.sounds().heard(), IsEmpty()) << "nothing is done yet";
    EXPECT_TRUE(desktop.files().facts("/Users/rb/a").exists);
    // Meanwhile nothing else happens to the file.
    line->actions().trashItem(cards[0]);
    EXPECT_EQ(desktop.sounds().beeps(), 1);
    pullOut(cards[0]);
    EXPECT_FALSE(desktop.panels().outgoingDrag());
    hand().release();
    // It may be gone a moment before we are told that it has arrived.
    desktop.files().remove("/Users/rb/a");
    line->prune();
    EXPECT_EQ(line->items().size(), 3U);
    desktop.files().addDocument("/Users/rb/a");
    desktop.advance(3);
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/b", "/Users/rb/box"));
    EXPECT_THAT(savedPaths(), ElementsAre("/Users/rb/b", "/Users/rb/box"));
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/a").exists);
    EXPECT_EQ(desktop.panels().visible().size(), 1U) << "nothing falls";

    // And one that doesn't arrive hangs as before.
    desktop.fileOperations().setDuration(1);
    desktop.fileOperations().refuse("disk full");
    EXPECT_EQ(line->folderDrops().put({cards[1]->path}, folder, true), FolderDrops::Outcome::UnderWay);
    desktop.advance(2);
    EXPECT_EQ(desktop.sounds().beeps(), 2);
    EXPECT_NEAR(cards[1]->card->presentation().opacity, 1, 1e-9);
    EXPECT_EQ(line->items().size(), 2U);
}

TEST_F(IntoFolders, TakingTenThousandFilesAtOnceOrOneByOne) {
    const auto folder = hangFolder("/Users/rb/box");
    std::vector<std::string> files;
    for (int i = 0; i < 10'000; ++i) {
        files.push_back("/d/" + std::to_string(i));
    }
    addDocuments({files.begin(), files.begin() + 5000});
    EXPECT_EQ(line->folderDrops().put(files, folder, true), FolderDrops::Outcome::WentIn);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/4999").exists);
    const auto flash = folder->swing->sublayers().back();
    EXPECT_EQ(std::get<TextContent>(flash->sublayers().front()->model().content).text, "✓ 已放入 5000 项");
    desktop.fileOperations().setDuration(0.01);
    EXPECT_EQ(line->folderDrops().put({"/Users/rb/box/1", "/Users/rb/box/2"}, hangFolder("/Users/rb/other"), false),
              FolderDrops::Outcome::UnderWay);
    desktop.advance(0.1);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/other/2").exists);
}

class Reordered : public HandsTest {
protected:
    Point anchorOf(std::size_t index) {
        const Point anchor = LineGeometry::anchor(index, line->items().size(), line->width());
        return {line->panelFrame().x + anchor.x, line->panelFrame().y + anchor.y - 60};
    }
    void grab(const RBPegItemRef& card) {
        const Point at = over(card);
        hand().press({at.x, at.y}, 1, ShiftModifier);
        hand().dragTo({at.x + 5, at.y});
    }
};

TEST_F(Reordered, TheCardFollowsTheHandAndTheOthersMakeRoom) {
    const auto cards = hang(4);
    grab(cards[0]);
    ASSERT_TRUE(cards[0]->moving);
    EXPECT_TRUE(line->draggingOut());
    hand().dragTo({anchorOf(2).x, anchorOf(2).y});
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/b", "/Users/rb/c", "/Users/rb/a", "/Users/rb/d"));
    const double x = cards[0]->swing->model().position.x;
    EXPECT_NEAR(cards[0]->swing->model().position.y, LineGeometry::anchorHeight(x, line->width()), 1e-9);
    hand().release();
    EXPECT_FALSE(cards[0]->moving);
    EXPECT_THAT(savedPaths(), ElementsAre("/Users/rb/b", "/Users/rb/c", "/Users/rb/a", "/Users/rb/d"));
    desktop.advance(0.7);
    EXPECT_FALSE(pillShows(cards[0])) << "a reorder is no click";
}

TEST_F(Reordered, LeavingTheLinePutsTheOrderBackAndGoesOnAsADragOut) {
    const auto cards = hang(3);
    grab(cards[0]);
    hand().dragTo(anchorOf(2));
    ASSERT_EQ(paths().back(), "/Users/rb/a");
    const Rect frame = line->panelFrame();
    hand().dragTo({anchorOf(2).x, frame.y + 16});
    EXPECT_FALSE(desktop.panels().outgoingDrag()) << "16 points is still on the line";
    hand().dragTo({anchorOf(2).x, frame.y + 15});
    EXPECT_TRUE(desktop.panels().outgoingDrag());
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/a", "/Users/rb/b", "/Users/rb/c"));
    hand().dropElsewhere(NoDragOperation);
    desktop.advance(0.1);
    EXPECT_FALSE(line->draggingOut());
}

TEST_F(Reordered, AFolderCardOnTheWayHoldsTheCardUntilItHasPassed) {
    const auto file = hang(1)[0];
    const auto folder = hangFolder("/Users/rb/box");
    grab(file);
    const Point at = anchorOf(1);
    hand().dragTo({at.x - 50, at.y});
    EXPECT_TRUE(folder->dropTarget) << "not yet passed";
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/a", "/Users/rb/box"));
    hand().dragTo({at.x + 44, at.y}); // the grab is 5 points from the card's middle
    EXPECT_TRUE(folder->dropTarget);
    hand().dragTo({at.x + 60, at.y});
    EXPECT_FALSE(folder->dropTarget);
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/box", "/Users/rb/a"));
    hand().dragTo({anchorOf(0).x, at.y});
    EXPECT_TRUE(folder->dropTarget);
    hand().release();
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/box"));
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/a").exists);
    EXPECT_FALSE(desktop.files().facts("/Users/rb/a").exists);
}

TEST_F(Reordered, WithOptionTheFolderGetsACopy) {
    const auto file = hang(1)[0];
    const auto folder = hangFolder("/Users/rb/box");
    grab(file);
    hand().dragTo(anchorOf(1));
    ASSERT_TRUE(folder->dropTarget);
    desktop.pointer().holdModifiers(OptionModifier);
    desktop.hand().release();
    EXPECT_EQ(line->items().size(), 2U);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/box/a").exists);
    EXPECT_TRUE(desktop.files().facts("/Users/rb/a").exists);
}

TEST_F(Reordered, ACardThatLeavesUnderTheHandEndsIt) {
    const auto cards = hang(2);
    grab(cards[0]);
    line->removeItem(cards[0], {.quietly = true});
    EXPECT_FALSE(line->draggingOut());
    hand().dragTo(anchorOf(0));
    hand().release();
    EXPECT_THAT(paths(), ElementsAre("/Users/rb/b"));
}

} // namespace
} // namespace rb
