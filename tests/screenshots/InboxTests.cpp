#include "tests/screenshots/CaptureFixture.h"

#include "screenshots/Inbox.h"

#include <gmock/gmock.h>

namespace rb {

namespace {

using testing::SizeIs;

class InboxTest : public CaptureTest {
protected:
    RBInbox inbox{desktop.screenshotPreferences(), desktop.userDefaults(), desktop.files()};

    const PropertyDictionary& settings() { return desktop.screenshotPreferences().stored(); }
    std::optional<PropertyValue> saved() { return desktop.userDefaults().objectForKey("ClotheslineInboxSaved"); }
    PropertyDictionary taken() {
        return {{"location", inboxFolder()},
                {"location-screenshot", inboxFolder()},
                {"show-thumbnail", false},
                {"target", "file"},
                {"target-screenshot", "file"}};
    }
};

TEST_F(InboxTest, TakesOverInOneStepAndGivesBackExactlyWhatWasThere) {
    auto& preferences = desktop.screenshotPreferences();
    preferences.store("target", 7);
    preferences.store("unrelated", "stays");
    const PropertyDictionary before = settings();
    inbox.apply();
    PropertyDictionary expected = taken();
    expected.emplace("unrelated", "stays");
    EXPECT_EQ(settings(), expected);
    EXPECT_EQ(preferences.commits(), 1);
    EXPECT_EQ(saved(), PropertyValue(PropertyDictionary{{"location", picturesFolder}, {"target", 7}}));
    EXPECT_TRUE(desktop.files().facts(inboxFolder()).isDirectory);
    EXPECT_EQ(preferences.programsFolder(), inboxFolder());

    inbox.apply();
    EXPECT_EQ(saved(), PropertyValue(PropertyDictionary{{"location", picturesFolder}, {"target", 7}}))
        << "a second time keeps what the first one saved";
    inbox.restore();
    EXPECT_EQ(settings(), before);
    EXPECT_FALSE(saved());
    EXPECT_FALSE(preferences.programsFolder());
    inbox.restore();
    EXPECT_EQ(settings(), before);
}

TEST_F(InboxTest, EveryMixOfAbsentAndPresentKeysComesBack) {
    const std::vector<PropertyValue> values = {"/Users/rb/Pictures", "~/Desktop", true, "clipboard", 3};
    for (unsigned mix = 0; mix < 32; ++mix) {
        VirtualDesktop other;
        RBInbox of{other.screenshotPreferences(), other.userDefaults(), other.files()};
        for (std::size_t i = 0; i < 5; ++i) {
            if ((mix >> i & 1) != 0) {
                other.screenshotPreferences().store(RBInbox::keys().at(i), values[i]);
            }
        }
        const PropertyDictionary before = other.screenshotPreferences().stored();
        of.apply();
        of.restore();
        EXPECT_EQ(other.screenshotPreferences().stored(), before) << mix;
    }
}

TEST_F(InboxTest, ALocationChangedMeanwhileStaysAndTheSavedOnesWait) {
    inbox.apply();
    desktop.screenshotPreferences().store("location", "/elsewhere");
    desktop.screenshotPreferences().store("location-screenshot", "/elsewhere");
    const PropertyDictionary changed = settings();
    inbox.restore();
    EXPECT_EQ(settings(), changed);
    EXPECT_TRUE(saved());
}

TEST_F(InboxTest, TheSavedOnesWaitUntilTheSettingsTakeThem) {
    const PropertyDictionary before = settings();
    inbox.apply();
    desktop.screenshotPreferences().refuseStoring(true);
    inbox.restore();
    EXPECT_EQ(settings(), taken());
    EXPECT_TRUE(saved());
    desktop.screenshotPreferences().refuseStoring(false);
    inbox.restore();
    EXPECT_EQ(settings(), before);
    EXPECT_FALSE(saved());
    // And nobody sends captures where nobody looks for them.
    desktop.screenshotPreferences().refuseStoring(true);
    inbox.apply();
    EXPECT_FALSE(desktop.screenshotPreferences().programsFolder());
}

TEST_F(InboxTest, OneOfTheTwoLocationsIsEnoughToCountAsApplied) {
    inbox.apply();
    desktop.screenshotPreferences().store("location", "/elsewhere");
    EXPECT_TRUE(inbox.isApplied());
    desktop.screenshotPreferences().store("location-screenshot", 5);
    EXPECT_FALSE(inbox.isApplied());
    desktop.screenshotPreferences().store("location-screenshot",
                                          "~/Library/./Application Support/Rook Bay/Screenshots/");
    EXPECT_TRUE(inbox.isApplied());
}

TEST_F(InboxTest, ALeftOverLocationIsNotTheUsersOwn) {
    desktop.screenshotPreferences().store("location", "/Users/old/Library/Application Support/Other/Shots");
    desktop.screenshotPreferences().store("target", "/Application Support/ is fine here");
    inbox.apply();
    EXPECT_EQ(saved(), PropertyValue(PropertyDictionary{{"target", "/Application Support/ is fine here"}}));
}

using TakeoverTest = InboxTest;

TEST_F(TakeoverTest, FollowsBothSwitchesAndTheRun) {
    const PropertyDictionary before = settings();
    start();
    EXPECT_EQ(settings(), before) << "off to begin with";
    line->setInbox(true);
    desktop.advance(0.5);
    EXPECT_EQ(settings(), taken());
    EXPECT_EQ(watched(), (std::multiset<std::string>{inboxFolder(), desktopFolder}));
    line->restoreScreenshotSettings();
    EXPECT_EQ(settings(), before) << "as at the end of the run";
    line.reset();
    line = std::make_unique<RBClothesline>(desktop.services(), toasts);
    start();
    EXPECT_EQ(settings(), taken()) << "again with every start";
    line->setInbox(false);
    EXPECT_EQ(settings(), before);
    EXPECT_FALSE(desktop.userDefaults().boolForKey("ClotheslineInbox"));
    desktop.advance(0.5);
    EXPECT_EQ(watched(), (std::multiset<std::string>{picturesFolder, desktopFolder}));
}

TEST_F(TakeoverTest, ARunThatWasKilledLosesNothing) {
    const PropertyDictionary before = settings();
    inbox.apply(); // and no restore
    desktop.userDefaults().setObject("ClotheslineInbox", true);
    start();
    EXPECT_EQ(settings(), taken());
    line->setInbox(false);
    EXPECT_EQ(settings(), before);

    inbox.apply();
    line.reset();
    line = std::make_unique<RBClothesline>(desktop.services(), toasts);
    start();
    EXPECT_EQ(settings(), before) << "killed while it was being switched off";
}

TEST_F(TakeoverTest, IsOfferedOnceWhateverTheAnswer) {
    for (const std::size_t button : {std::size_t{1}, std::size_t{0}}) {
        desktop.userDefaults().removeObject("ClotheslineInboxOffered");
        line.reset();
        line = std::make_unique<RBClothesline>(desktop.services(), toasts);
        line->start();
        desktop.advance(1.19);
        EXPECT_FALSE(desktop.alerts().current());
        desktop.advance(0.02);
        ASSERT_TRUE(desktop.alerts().current());
        EXPECT_TRUE(desktop.userDefaults().boolForKey("ClotheslineInboxOffered")) << "before the answer";
        EXPECT_TRUE(desktop.application().isActive());
        desktop.alerts().answerNext(button);
        desktop.advance(1);
        EXPECT_EQ(desktop.userDefaults().boolForKey("ClotheslineInbox"), button == 0);
    }
    const Alert& offer = desktop.alerts().shown().front();
    EXPECT_EQ(offer.messageText, "让截图直接挂到晾衣绳上？");
    EXPECT_EQ(offer.buttons, (std::vector<AlertButton>{{.title = "开启"}, {.title = "暂不"}}));
    line.reset();
    line = std::make_unique<RBClothesline>(desktop.services(), toasts);
    line->start();
    desktop.advance(3);
    EXPECT_THAT(desktop.alerts().shown(), SizeIs(2));
}

TEST_F(TakeoverTest, IsNotOfferedWhenItIsOnAlready) {
    desktop.userDefaults().removeObject("ClotheslineInboxOffered");
    desktop.userDefaults().setObject("ClotheslineInbox", true);
    line->start();
    desktop.advance(3);
    EXPECT_THAT(desktop.alerts().shown(), SizeIs(0));
    EXPECT_TRUE(desktop.userDefaults().boolForKey("ClotheslineInboxOffered"));
}

TEST_F(TakeoverTest, GoesOnWhereTheFolderCannotBeMade) {
    desktop.screenshotPreferences().refuseFolder();
    inbox.apply();
    EXPECT_EQ(settings(), taken());
}

} // namespace

} // namespace rb
