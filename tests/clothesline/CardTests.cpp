#include "tests/clothesline/LineFixture.h"

#include "clothesline/CardLayers.h"

#include <numbers>

namespace rb {
namespace {

constexpr double degree = std::numbers::pi / 180;

class Cards : public LineTest {
protected:
    Cards() {
        desktop.random().queue(10000); // the first gust comes after 16 seconds
        line->start();
    }

    RBPegItemRef hangImage(Size pixels) {
        desktop.files().addImage("/shot.png", pixels);
        return line->hangURL("/shot.png", {.quietly = true});
    }
    static std::string shown(const RBPegItem& item) {
        const auto bitmap = std::get<std::shared_ptr<const Bitmap>>(item.photo->model().contents);
        return dynamic_cast<const VirtualBitmap&>(*bitmap).content();
    }
};

TEST_F(Cards, PicturesKeepTheirAspectInTheirFrame) {
    const auto photo = hangImage({4000, 3000});
    EXPECT_TRUE(photo->isImage);
    EXPECT_EQ(photo->cardSize, (Size{144, 110}));
    EXPECT_EQ(photo->swing->model().bounds.size(), (Size{150, 158}));
    EXPECT_EQ(photo->photo->model().frame(), (Rect{4, 4, 136, 102}));
    line->takeDown(photo);
    EXPECT_EQ(hangImage({1000, 4000})->cardSize, (Size{34, 112}));
}

TEST_F(Cards, OtherFilesShowIconAndNameAndLaterTheirFirstPage) {
    desktop.files().addDocument("/Users/rb/Report.pdf");
    const auto document = line->hangURL("/Users/rb/Report.pdf", {.quietly = true});
    EXPECT_EQ(document->cardSize, (Size{120, 100}));
    EXPECT_EQ(document->photo->model().frame(), (Rect{30, 30, 60, 60}));
    EXPECT_EQ(shown(*document), "icon /Users/rb/Report.pdf");
    desktop.thumbnails().answer("/Users/rb/Report.pdf");
    EXPECT_EQ(shown(*document), "rendering /Users/rb/Report.pdf");

    desktop.files().addImage("/damaged.png");
    const auto damaged = line->hangURL("/damaged.png", {.quietly = true});
    EXPECT_FALSE(damaged->isImage);
    EXPECT_EQ(damaged->cardSize, (Size{120, 100}));
}

TEST_F(Cards, FoldersArePlainAndPackagesCountAsFiles) {
    desktop.files().addFolder("/folder");
    desktop.files().addPackage("/App.app");
    EXPECT_TRUE(line->hangURL("/folder", {.quietly = true})->isFolder);
    const auto package = line->hangURL("/App.app", {.quietly = true});
    EXPECT_FALSE(package->isFolder);
    EXPECT_EQ(desktop.thumbnails().pending(), std::vector<std::string>{"/App.app"});
    line->takeDown(package);
    EXPECT_TRUE(desktop.thumbnails().pending().empty()) << "nobody waits for a card that left";
}

TEST_F(Cards, ANewCardDropsInAndSwings) {
    reveal();
    desktop.files().addDocument("/a");
    const auto item = line->hangURL("/a", {.animated = true});
    const double anchor = item->swing->model().position.y;
    EXPECT_DOUBLE_EQ(item->swing->presentation().position.y, anchor + 46);
    EXPECT_DOUBLE_EQ(item->swing->presentation().opacity, 0);
    EXPECT_NEAR(item->swing->presentation().transform.rotation, -16 * degree, 1e-9);
    desktop.advance(6);
    EXPECT_DOUBLE_EQ(item->swing->presentation().position.y, anchor);
    EXPECT_DOUBLE_EQ(item->swing->presentation().transform.rotation, 0);
}

TEST_F(Cards, NudgesAddUpAndSettleAtTheTilt) {
    desktop.random().queue(10000); // tilt +2.5
    const auto item = hang(1)[0];
    reveal();
    desktop.advance(6.3); // the drop's own swing is over
    const double rest = item->swing->presentation().transform.rotation;
    EXPECT_NEAR(rest, -2.5 * degree, 1e-9);
    line->nudge(*item, 4);
    line->nudge(*item, 4);
    desktop.advance(0.3);
    EXPECT_NEAR(item->swing->presentation().transform.rotation, rest - 8 * degree, 1e-3);
    desktop.advance(6.3);
    EXPECT_NEAR(item->swing->presentation().transform.rotation, rest, 1e-9);
}

TEST_F(Cards, TheBreezeSwaysARevealedLineOnly) {
    const auto item = hang(1)[0];
    desktop.advance(20);
    EXPECT_TRUE(item->swing->animationKeys().empty());
    reveal();
    desktop.advance(8);
    bool swayed = false;
    for (int i = 0; i < 120 && !swayed; ++i) {
        desktop.advance(0.1);
        swayed = !item->swing->animationKeys().empty();
    }
    EXPECT_TRUE(swayed);
}

TEST_F(Cards, NeighboursMakeRoomFromWhereTheyAre) {
    const auto first = hang(1)[0];
    reveal();
    const double before = first->swing->presentation().position.x;
    desktop.files().addDocument("/z");
    line->hangURL("/z", {.animated = true});
    EXPECT_DOUBLE_EQ(first->swing->presentation().position.x, before);
    EXPECT_DOUBLE_EQ(first->swing->model().position.x, before - 87);
    desktop.advance(3);
    EXPECT_DOUBLE_EQ(first->swing->presentation().position.x, before - 87);
}

TEST_F(Cards, HoverAndPressLiftAndSinkTheCard) {
    const auto item = hang(1)[0];
    reveal();
    const auto settle = [&] {
        desktop.advance(2);
        return item->card->presentation().transform.scale;
    };
    desktop.pointer().moveTo({item->peg.frame.midX(), 734 + item->peg.frame.midY()});
    EXPECT_DOUBLE_EQ(settle(), 1.035);
    EXPECT_DOUBLE_EQ(item->cross->presentation().opacity, 1);
    EXPECT_DOUBLE_EQ(item->glass->presentation().shadowOpacity, 0.26);
    setItemPressed(*item, true);
    EXPECT_DOUBLE_EQ(settle(), 0.95);
    item->dropTarget = true;
    applyCardScale(*item);
    EXPECT_DOUBLE_EQ(settle(), 1.1);
    item->dropTarget = false;
    item->dragging = true;
    setItemPressed(*item, false);
    EXPECT_DOUBLE_EQ(settle(), 1.0);
}

TEST_F(Cards, TheCopyConfirmationStaysForTheLatestCopy) {
    const auto item = hang(1)[0];
    reveal();
    line->showPill(item);
    desktop.advance(0.5);
    line->showPill(item);
    desktop.advance(1.1);
    EXPECT_DOUBLE_EQ(item->pill->presentation().opacity, 1);
    desktop.advance(0.4);
    EXPECT_DOUBLE_EQ(item->pill->presentation().opacity, 0);
}

TEST_F(Cards, ACardThatLeavesFallsAsAPictureOfItself) {
    desktop.random().queue(10000); // tilt +2.5
    const auto item = hang(2)[0];
    reveal();
    desktop.advance(6);
    bool plain = false;
    desktop.layerRenderer().onRender = [&](const Layer&) {
        plain = item->edge->model().hidden && item->cross->model().hidden && item->pill->model().hidden;
    };
    line->takeDown(item);
    EXPECT_TRUE(plain);
    EXPECT_FALSE(item->edge->model().hidden);
    ASSERT_EQ(desktop.panels().visible().size(), 2U);
    const auto overlay = desktop.panels().visible().back();
    EXPECT_EQ(overlay->spec().level, 4);
    EXPECT_EQ(overlay->frame(), (Rect{0, 0, 1512, 982}));
    const auto falling = overlay->rootLayer()->sublayers().front();
    const Point start{item->swing->model().position.x, 734 + item->swing->model().position.y};
    EXPECT_EQ(falling->presentation().position, start);
    EXPECT_NEAR(falling->presentation().transform.rotation, -2.5 * degree, 1e-9);
    EXPECT_NEAR(falling->model().transform.rotation, -40 * degree, 1e-9);
    desktop.advance(0.5);
    EXPECT_LT(falling->presentation().position.y, start.y - 200);
    desktop.advance(0.1);
    EXPECT_EQ(desktop.panels().visible().size(), 1U);
}

TEST_F(Cards, NothingFallsFromAHiddenLine) {
    line->takeDown(hang(1)[0]);
    EXPECT_TRUE(desktop.panels().visible().empty());
    EXPECT_EQ(desktop.sounds().heard().back(), (VirtualSounds::Sound{"Pop", 0.25}));
}

} // namespace
} // namespace rb
