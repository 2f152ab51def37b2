#include "desktops/macos/CaptureFacts.h"
#include "desktops/macos/Log.h"
#include "desktops/macos/ScreenshotPreferences.h"

#include "tests/macos/MacTest.h"
#include "tests/macos/runtime/Attributes.h"

#import <CoreFoundation/CoreFoundation.h>

namespace rb {

namespace {

class ScreenshotTest : public fake::MacTest {
protected:
    ~ScreenshotTest() override { fake::attributes().clear(); }

    MacLog log_;
    MacScreenshotPreferences preferences_{log_};
    MacCaptureFacts facts_;
};

TEST_F(ScreenshotTest, settingsAreThoseOfTheSystemsOwnDomain) {
    preferences_.setValue("location", "/ours");
    const auto set = fake::lastCall("CFPreferencesSetAppValue");
    EXPECT_TRUE([set.object(0) isEqual:@"location"]);
    EXPECT_TRUE([set.object(1) isEqual:@"/ours"]);
    EXPECT_TRUE([set.object(2) isEqual:@"com.apple.screencapture"]);
    preferences_.setValue("location", std::nullopt);
    EXPECT_EQ(fake::lastCall("CFPreferencesSetAppValue").object(1), nil) << "removes the key";
    preferences_.synchronize();
    EXPECT_TRUE([fake::lastCall("CFPreferencesAppSynchronize").object(0) isEqual:@"com.apple.screencapture"]);
}

TEST_F(ScreenshotTest, theMarkCountsByItsPresenceAlone) {
    EXPECT_FALSE(facts_.isMarkedAsCapture("/a.png"));
    fake::attributes()["/a.png com.apple.metadata:kMDItemIsScreenCapture"] = "";
    EXPECT_TRUE(facts_.isMarkedAsCapture("/a.png"));
    EXPECT_FALSE(facts_.captureRectangle("/a.png")) << "no attribute";
    fake::attributes()["/a.png com.apple.metadata:kMDItemScreenCaptureGlobalRect"] = "";
    EXPECT_FALSE(facts_.captureRectangle("/a.png")) << "an empty one";
}

} // namespace

} // namespace rb
