#include "tests/clothesline/LineFixture.h"

namespace rb {
namespace {

using Paths = std::vector<std::string>;
using Sound = VirtualSounds::Sound;

class LineItems : public LineTest {
protected:
    LineItems() { line->start(); }
};

TEST_F(LineItems, HangingTheSameFileTwiceKeepsOneCardAndNudgesIt) {
    desktop.files().addDocument("/Users/rb/Notes.txt");
    const auto item = line->hangURL("~/./Documents/../Notes.txt", {});
    ASSERT_TRUE(item);
    EXPECT_EQ(item->path, "/Users/rb/Notes.txt");
    EXPECT_EQ(desktop.sounds().heard(), (std::vector<Sound>{{"Tink", 0.35}}));

    reveal();
    desktop.sounds().clear();
    const auto keysBefore = item->swing->animationKeys().size();
    EXPECT_EQ(line->hangURL("/Users/rb//Notes.txt", {.animated = true}), nullptr);
    EXPECT_EQ(line->items().size(), 1U);
    EXPECT_EQ(item->swing->animationKeys().size(), keysBefore + 2); // push and back
    EXPECT_TRUE(desktop.sounds().heard().empty());
}

TEST_F(LineItems, NothingHangsFromAPathThatLeadsNowhere) {
    EXPECT_EQ(line->hangURL("", {}), nullptr);
    EXPECT_EQ(line->hangURL("/Users/rb/gone", {}), nullptr);
    EXPECT_TRUE(desktop.sounds().heard().empty());
}

TEST_F(LineItems, TheOldestFallsSilentlyWhenOneTooManyHangs) {
    desktop.screens().set({{.id = 1, .frame = {0, 0, 600, 400}, .visibleFrame = {0, 0, 600, 376}}});
    hang(3);
    desktop.files().addDocument("/Users/rb/new");
    line->hangURL("/Users/rb/new", {.animated = true});
    EXPECT_EQ(paths(), (Paths{"/Users/rb/b", "/Users/rb/c", "/Users/rb/new"}));
    EXPECT_EQ(desktop.sounds().heard(), (std::vector<Sound>{{"Tink", 0.35}}));
    EXPECT_EQ(savedPaths(), paths());
}

TEST_F(LineItems, TakenDownTogetherTheyLeaveOneAfterAnotherWithOneSound) {
    const auto hung = hang(3);
    reveal();
    line->takeDownItems(hung);
    desktop.advance(0);
    EXPECT_EQ(line->items().size(), 2U);
    desktop.advance(0.06);
    EXPECT_EQ(line->items().size(), 1U);
    desktop.advance(0.06);
    EXPECT_TRUE(line->items().empty());
    EXPECT_EQ(desktop.sounds().heard(), (std::vector<Sound>{{"Pop", 0.25}}));
    EXPECT_EQ(savedPaths(), Paths{});
}

TEST_F(LineItems, AnEmptiedLineRetractsUnlessSomethingHangsAgain) {
    const auto hung = hang(1);
    reveal();
    desktop.pointer().moveTo({700, 900}); // inside the line
    desktop.advance(0.1);
    line->takeDown(hung[0]);
    desktop.advance(0.69);
    EXPECT_TRUE(line->revealed());
    desktop.advance(0.02);
    EXPECT_FALSE(line->revealed());

    const auto again = hang(1);
    reveal();
    desktop.advance(0.1);
    line->takeDown(again[0]);
    desktop.advance(0.3);
    hang(1);
    desktop.advance(1);
    EXPECT_TRUE(line->revealed());
}

TEST_F(LineItems, FilesThatWentAwayArePruned) {
    hang(3);
    desktop.files().remove("/Users/rb/b");
    line->prune();
    EXPECT_EQ(savedPaths(), (Paths{"/Users/rb/a", "/Users/rb/c"}));
}

TEST_F(LineItems, SoundsAreHeardOnlyWhenTheyAreOn) {
    desktop.userDefaults().setObject("ClotheslineSound", false);
    desktop.files().addDocument("/Users/rb/a");
    line->takeDown(line->hangURL("/Users/rb/a", {}));
    EXPECT_TRUE(desktop.sounds().heard().empty());
}

TEST_F(LineTest, TheLineSurvivesARestart) {
    for (const char* path : {"/a", "/b", "/c", "/d", "/e"}) {
        desktop.files().addDocument(path);
    }
    desktop.screens().set({{.id = 1, .frame = {0, 0, 600, 400}, .visibleFrame = {0, 0, 600, 376}}});
    desktop.userDefaults().setObject("ClotheslinePaths", PropertyArray{"/a", "/missing", "/b", "/b", "/c", "/d"});
    line->start();
    EXPECT_EQ(paths(), (Paths{"/a", "/b", "/c"}));
    EXPECT_EQ(savedPaths(), paths());
    EXPECT_TRUE(desktop.sounds().heard().empty());
}

TEST_F(LineTest, TheListUnderItsOlderNameIsTakenOverOnce) {
    desktop.files().addDocument("/a");
    desktop.files().addDocument("/b");
    desktop.userDefaults().setObject("FileShelfPaths", PropertyArray{"/a"});
    // A list that isn't one of texts counts as absent.
    desktop.userDefaults().setObject("ClotheslinePaths", PropertyArray{"/b", 7});
    line->start();
    EXPECT_EQ(paths(), Paths{"/a"});
    EXPECT_EQ(savedPaths(), Paths{"/a"});
    EXPECT_FALSE(desktop.userDefaults().objectForKey("FileShelfPaths"));
}

} // namespace
} // namespace rb
