#include "tests/screenshots/CaptureFixture.h"

#include "screenshots/ScreenshotWatcher.h"

#include <gmock/gmock.h>

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Paths = std::vector<std::string>;

// Where events say what changed, and where they don't.
class WatcherTest : public CaptureTest, public testing::WithParamInterface<bool> {
protected:
    WatcherTest() {
        folders().setNamesChanges(GetParam());
        make(picturesFolder);
    }
    void make(const std::string& folder) {
        watcher = std::make_unique<RBScreenshotWatcher>(desktop.services());
        watcher->fixedFolder = folder;
        watcher->onNew = [this](const std::string& path) { reported.push_back(path); };
        watcher->onDenied = [this] { ++denials; };
    }
    // Long enough for the quiet time and a listing.
    void settle() { desktop.advance(0.5); }
    VirtualFolderWatches& folders() { return desktop.folderWatches(); }
    int scans() { return folders().listings() + folders().looks(); }

    std::unique_ptr<RBScreenshotWatcher> watcher;
    Paths reported;
    int denials = 0;
};

TEST_P(WatcherTest, ABurstGivesOneScanAQuarterSecondAfterItsEnd) {
    watcher->start();
    settle();
    const int before = scans();
    for (int i = 0; i < 10; ++i) {
        folders().put(picturesFolder + "/shot.png");
        desktop.advance(0.2);
    }
    EXPECT_EQ(scans(), before);
    desktop.advance(0.04);
    EXPECT_EQ(scans(), before);
    desktop.advance(0.02);
    EXPECT_EQ(scans(), before + 1);
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/shot.png"));
}

TEST_P(WatcherTest, AKnownFolderIsListedAgainOnlyWhereChangesHaveNoNames) {
    for (int i = 0; i < 1000; ++i) {
        folders().put(picturesFolder + "/old " + std::to_string(i) + ".png", 0);
    }
    watcher->start();
    settle();
    EXPECT_EQ(folders().listings(), 1);
    for (const char* name : {"/a.png", "/b.png"}) {
        folders().put(picturesFolder + name);
        folders().put(picturesFolder + name);
        settle();
    }
    EXPECT_EQ(folders().listings(), GetParam() ? 1 : 3);
    folders().loseCount();
    folders().put(picturesFolder + "/c.png");
    folders().put(picturesFolder + "/d.png");
    settle();
    EXPECT_EQ(folders().listings(), GetParam() ? 2 : 4);
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/a.png", picturesFolder + "/b.png", picturesFolder + "/c.png",
                                      picturesFolder + "/d.png"));
    // What comes after that is known by name again.
    folders().put(picturesFolder + "/e.png");
    settle();
    EXPECT_EQ(folders().listings(), GetParam() ? 2 : 5);
    EXPECT_EQ(reported.size(), 5U);
}

TEST_P(WatcherTest, WhatComesWhileTheFolderIsLookedAtIsNotLost) {
    desktop.runLoop().setBackgroundDelay(1);
    watcher->start();
    desktop.advance(1.5); // open, and being listed
    for (const char* name : {"/a.png", "/b.png"}) {
        folders().put(picturesFolder + name);
        desktop.advance(0.3);
    }
    desktop.advance(5);
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/a.png", picturesFolder + "/b.png"));
    folders().put(picturesFolder + "/c.png");
    desktop.advance(0.5);
    folders().take(picturesFolder + "/c.png"); // before anyone looked
    folders().put(picturesFolder + "/d.png");
    desktop.advance(5);
    EXPECT_EQ(reported.size(), 3U);
    EXPECT_EQ(reported.back(), picturesFolder + "/d.png");
    folders().put(picturesFolder + "/c.png");
    desktop.advance(5);
    EXPECT_EQ(reported.back(), picturesFolder + "/c.png");
}

TEST_P(WatcherTest, MoreChangesThanAreWorthCountingAreOneListing) {
    watcher->start();
    settle();
    const int before = folders().listings();
    constexpr int many = 25'000;
    reported.reserve(many);
    for (int i = 0; i < many; ++i) {
        folders().put(picturesFolder + "/" + std::to_string(i) + ".txt");
    }
    settle();
    EXPECT_EQ(folders().listings(), before + 1);
    folders().put(picturesFolder + "/a.png");
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/a.png"));
}

TEST_P(WatcherTest, OnlyWhatIsYoungerThanTheWatcherCounts) {
    const double now = desktop.runLoop().wallClock();
    folders().put(picturesFolder + "/old.png", now - 1.01);
    folders().put(picturesFolder + "/fresh.png", now - 0.99);
    folders().put(picturesFolder + "/unknown.png", std::nullopt);
    watcher->start();
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/fresh.png", picturesFolder + "/unknown.png"));
}

TEST_P(WatcherTest, KindsGoByTheExtension) {
    watcher->start();
    for (const char* name : {"a.PNG", "b.jpg", "c.jpeg", "d.heic", "e.tif", "f.tiff", "g.gif", "h.WebP", "i.txt", "j",
                             "k.mov", "l.mp4", "png"}) {
        folders().put(picturesFolder + "/" + name);
    }
    settle();
    EXPECT_EQ(reported.size(), 8u);
    reported.clear();
    desktop.advance(2);
    make(picturesFolder);
    watcher->acceptsRecordings = true;
    watcher->start();
    folders().put(picturesFolder + "/m.MOV");
    folders().put(picturesFolder + "/n.mp4");
    settle();
    EXPECT_EQ(reported.size(), 2u);
}

TEST_P(WatcherTest, OnTheDesktopOnlyMarkedImagesCountAndAreJudgedOnce) {
    make(desktopFolder);
    watcher->acceptsRecordings = true;
    watcher->start();
    desktop.captureFacts().mark(desktopFolder + "/marked.png");
    for (const char* name : {"/marked.png", "/copied.png", "/film.mov"}) {
        folders().put(desktopFolder + name);
    }
    settle();
    EXPECT_THAT(reported, ElementsAre(desktopFolder + "/film.mov", desktopFolder + "/marked.png"));
    desktop.captureFacts().mark(desktopFolder + "/copied.png");
    folders().put(desktopFolder + "/copied.png");
    settle();
    EXPECT_EQ(reported.size(), 2u) << "too late";
}

TEST_P(WatcherTest, AFileThatLeavesAndComesBackIsJudgedAfresh) {
    watcher->start();
    folders().put(picturesFolder + "/a.png");
    settle();
    folders().take(picturesFolder + "/a.png");
    settle();
    folders().put(picturesFolder + "/a.png");
    settle();
    EXPECT_EQ(reported.size(), 2u);
    // A failed listing forgets everything too; the cut-off still keeps old files out.
    const double old = desktop.runLoop().wallClock() - 100;
    folders().put(picturesFolder + "/old.png", old);
    folders().breakListing(picturesFolder);
    folders().touch(picturesFolder);
    settle();
    folders().mendListing(picturesFolder);
    folders().touch(picturesFolder);
    settle();
    EXPECT_EQ(reported.size(), 3u);
}

TEST_P(WatcherTest, AStopDropsWhatIsOnItsWay) {
    watcher->start();
    watcher->stop();
    settle();
    EXPECT_THAT(watched(), IsEmpty());
    EXPECT_EQ(folders().openFolders(), 0u) << "the folder that was being opened is closed";
    watcher->start();
    watcher->start();
    settle();
    EXPECT_EQ(watched().count(picturesFolder), 1u);
    folders().put(picturesFolder + "/a.png");
    desktop.advance(0.24);
    watcher->stop();
    settle();
    EXPECT_THAT(reported, IsEmpty());
    watcher->start();
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/a.png")) << "judged after the new start, once";
}

TEST_P(WatcherTest, AFolderThatCannotBeOpenedIsToldAndTriedAgainOnTheNextStart) {
    folders().deny(picturesFolder);
    watcher->start();
    settle();
    EXPECT_EQ(denials, 1);
    EXPECT_EQ(desktop.log().lines().back(), "Rook Bay: cannot watch " + picturesFolder);
    folders().allow(picturesFolder);
    watcher->start();
    settle();
    EXPECT_EQ(denials, 1);
    EXPECT_EQ(watched().count(picturesFolder), 1u);
}

TEST_P(WatcherTest, AListingThatCrossesAStopIsMadeUpFor) {
    watcher->start();
    settle();
    folders().put(picturesFolder + "/a.png");
    // Right behind the scan, while its listing is on the way.
    DelayedCalls later(desktop.runLoop());
    desktop.runLoop().post([&] {
        later.after(0.25, [&] {
            watcher->stop();
            watcher->start();
        });
    });
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/a.png"));
}

TEST_P(WatcherTest, AFolderInThePlaceOfTheWatchedOneIsWatchedInstead) {
    watcher->start();
    settle();
    folders().put(picturesFolder + "/a.png");
    settle();
    folders().replace(picturesFolder);
    folders().put(picturesFolder + "/b.png");
    settle();
    EXPECT_EQ(reported.size(), 1u) << "nobody tells of it";
    watcher->checkFolder();
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/a.png", picturesFolder + "/b.png")) << "each once";
    EXPECT_EQ(folders().openFolders(), 1u);
    folders().put(picturesFolder + "/c.png");
    settle();
    EXPECT_EQ(reported.size(), 3u);
    // It goes while it is being listed: the new one is watched at once, and nothing is forgotten.
    folders().touch(picturesFolder);
    desktop.advance(0.2);
    folders().replace(picturesFolder);
    settle();
    folders().put(picturesFolder + "/d.png");
    settle();
    EXPECT_EQ(reported.size(), 4u);
    watcher->stop();
    watcher->checkFolder();
    settle();
    EXPECT_THAT(watched(), IsEmpty()) << "what was stopped stays so";
}

TEST_P(WatcherTest, AnUnreadableFolderIsTriedAgainQuietly) {
    watcher->start();
    settle();
    folders().deny(picturesFolder);
    for (int i = 0; i < 3; ++i) {
        watcher->checkFolder();
        settle();
    }
    EXPECT_EQ(denials, 1);
    EXPECT_THAT(watched(), IsEmpty());
    folders().put(picturesFolder + "/meanwhile.png");
    folders().allow(picturesFolder);
    watcher->checkFolder();
    settle();
    EXPECT_THAT(reported, ElementsAre(picturesFolder + "/meanwhile.png"));
    EXPECT_EQ(denials, 1);
}

TEST_P(WatcherTest, TheWatcherMayEndInItsOwnReport) {
    watcher->onNew = [this](const std::string& path) {
        reported.push_back(path);
        watcher->stop();
    };
    watcher->start();
    folders().put(picturesFolder + "/a.png");
    folders().put(picturesFolder + "/b.png");
    settle();
    EXPECT_EQ(reported.size(), 1u);
}

TEST_P(WatcherTest, TheSystemsFolderIsTheFirstSettingThatNamesAFolder) {
    auto& preferences = desktop.screenshotPreferences();
    const auto folder = [this] { return RBScreenshotWatcher::screenshotFolder(desktop.services()); };
    EXPECT_EQ(folder(), picturesFolder);
    desktop.files().addFolder("/Users/rb/Shots");
    preferences.store("location-screenshot", "~/Shots");
    EXPECT_EQ(folder(), "/Users/rb/Shots");
    for (const PropertyValue& useless : {PropertyValue(""), PropertyValue(7), PropertyValue("/nowhere"),
                                         PropertyValue(PropertyArray{"/Users/rb/Shots"})}) {
        preferences.store("location-screenshot", useless);
        EXPECT_EQ(folder(), picturesFolder);
    }
    desktop.files().addDocument("/Users/rb/file");
    preferences.store("location", "/Users/rb/file");
    EXPECT_EQ(folder(), desktopFolder);
}

INSTANTIATE_TEST_SUITE_P(Changes, WatcherTest, testing::Bool(),
                         [](const auto& tested) { return std::string(tested.param ? "named" : "unnamed"); });

using LineWatchTest = CaptureTest;

TEST_F(LineWatchTest, TheLineWatchesTheSystemsFolderAndTheDesktopAndFollows) {
    start();
    EXPECT_EQ(watched(), (std::multiset<std::string>{picturesFolder, desktopFolder}));
    desktop.screenshotPreferences().store("location", desktopFolder);
    desktop.files().addFolder(desktopFolder);
    desktop.advance(2.6);
    EXPECT_EQ(watched(), (std::multiset<std::string>{desktopFolder})) << "one folder, one watcher";
    desktop.screenshotPreferences().store("location", picturesFolder);
    desktop.advance(2.6);
    EXPECT_EQ(watched().size(), 2u);
    capture(picturesFolder + "/later.png");
    desktop.advance(1);
    EXPECT_THAT(paths(), ElementsAre(picturesFolder + "/later.png"));
}

TEST_F(LineWatchTest, RecordingsHangOnlyFromOurOwnFolder) {
    start();
    capture(picturesFolder + "/film.mov");
    desktop.advance(1);
    EXPECT_THAT(paths(), IsEmpty());
    line->setInbox(true);
    desktop.advance(1);
    capture(inboxFolder() + "/film.mov");
    desktop.advance(1);
    EXPECT_THAT(paths(), ElementsAre(inboxFolder() + "/film.mov"));
    EXPECT_TRUE(line->isInInbox(inboxFolder() + "/film.mov"));
    EXPECT_FALSE(line->isInInbox(inboxFolder()));
}

TEST_F(LineWatchTest, AnUnreadableScreenshotFolderIsToldOnceAnUnreadableDesktopNever) {
    desktop.folderWatches().deny(picturesFolder);
    desktop.folderWatches().deny(desktopFolder);
    start();
    desktop.advance(0.5);
    EXPECT_EQ(desktop.panels().visible().size(), 1u) << "the toast";
}

TEST_F(LineWatchTest, WhoHasNoDesktopHearsNothingOfIt) {
    desktop.screenshotPreferences().remove("location");
    desktop.folderWatches().deny(desktopFolder);
    start();
    desktop.advance(5);
    EXPECT_THAT(desktop.panels().visible(), IsEmpty());
    EXPECT_EQ(desktop.log().lines(), std::vector<std::string>{"Rook Bay: cannot watch " + desktopFolder});
    // One that is made later counts from then on.
    desktop.files().addFolder(desktopFolder);
    desktop.folderWatches().allow(desktopFolder);
    desktop.captureFacts().mark(desktopFolder + "/a.png");
    desktop.advance(3);
    capture(desktopFolder + "/a.png");
    desktop.advance(1);
    EXPECT_THAT(paths(), ElementsAre(desktopFolder + "/a.png"));
}

TEST_F(LineWatchTest, BothFoldersArePickedUpAgain) {
    desktop.files().addFolder(desktopFolder);
    start();
    desktop.captureFacts().mark(desktopFolder + "/b.png");
    for (const auto& [folder, name] : {std::pair(picturesFolder, "/a.png"), std::pair(desktopFolder, "/b.png")}) {
        desktop.folderWatches().replace(folder);
        capture(folder + name);
    }
    desktop.advance(3);
    EXPECT_EQ(paths().size(), 2u);
}

TEST_F(LineWatchTest, OurOwnFolderIsMadeAnewWhileCapturesGoThere) {
    start();
    line->setInbox(true);
    desktop.advance(1);
    desktop.files().remove(inboxFolder());
    desktop.advance(2.1);
    EXPECT_TRUE(desktop.files().facts(inboxFolder()).isDirectory);
    line->setInbox(false);
    desktop.files().remove(inboxFolder());
    desktop.advance(5);
    EXPECT_FALSE(desktop.files().facts(inboxFolder()).exists);
}

TEST_F(LineWatchTest, AStopEndsTheWatchingAndAStartBeginsAnew) {
    desktop.userDefaults().removeObject("ClotheslineInboxOffered");
    start();
    line->setInbox(true);
    desktop.userDefaults().setObject("ClotheslineInboxOffered", false);
    line->stop();
    line->stop();
    desktop.advance(5);
    EXPECT_THAT(watched(), IsEmpty());
    EXPECT_EQ(desktop.screenshotPreferences().stored().at("location"), PropertyValue(picturesFolder));
    EXPECT_THAT(desktop.alerts().shown(), IsEmpty());
    EXPECT_TRUE(desktop.userDefaults().boolForKey("ClotheslineInbox"));
    start();
    EXPECT_EQ(watched(), (std::multiset<std::string>{inboxFolder(), desktopFolder}));
}

TEST_F(LineWatchTest, WithTheSettingOffNothingIsWatchedAndNothingIsOffered) {
    desktop.userDefaults().setObject("ClotheslineScreenshots", false);
    desktop.userDefaults().removeObject("ClotheslineInboxOffered");
    start();
    desktop.advance(5);
    EXPECT_THAT(watched(), IsEmpty());
    EXPECT_THAT(desktop.alerts().shown(), IsEmpty());
}

} // namespace

} // namespace rb
