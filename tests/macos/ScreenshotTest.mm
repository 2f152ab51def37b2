#include "desktops/macos/CaptureFacts.h"
#include "desktops/macos/FolderWatches.h"
#include "desktops/macos/Log.h"
#include "desktops/macos/ScreenshotPreferences.h"

#include "tests/macos/MacTest.h"
#include "tests/macos/runtime/Attributes.h"

#import <CoreFoundation/CoreFoundation.h>

#include <fcntl.h>
#include <utility>

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
    // The user's own settings are in the user defaults, which go to the disk before the system's change.
    const auto stored = fake::calls("CFPreferencesAppSynchronize");
    ASSERT_EQ(stored.size(), 2u);
    EXPECT_TRUE([stored[0].object(0) isEqual:@"kCFPreferencesCurrentApplication"]);
    EXPECT_TRUE([stored[1].object(0) isEqual:@"com.apple.screencapture"]);
}

TEST_F(ScreenshotTest, theOwnFolderIsPrivate) {
    (void)preferences_.makeOwnFolder();
    NSDictionary* attributes =
        fake::lastCall("-[NSFileManager createDirectoryAtURL:withIntermediateDirectories:attributes:error:]").object(2);
    EXPECT_EQ([attributes[NSFilePosixPermissions] integerValue], 0700);
}

class FolderWatchTest : public fake::MacTest {
protected:
    void SetUp() override {
        folder_ = watches_.open("/tmp");
        ASSERT_TRUE(folder_);
    }
    void TearDown() override {
        folder_.reset();
        MacTest::TearDown();
    }
    // Watches with the only reference to the folder; gives its descriptor.
    int watch(std::function<void(const FolderChange&)> changed) {
        handle_ = watches_.watch(std::exchange(folder_, nullptr), std::move(changed));
        const auto created = fake::lastCall("dispatch_source_create");
        EXPECT_EQ(created.integer(2),
                  DISPATCH_VNODE_DELETE | DISPATCH_VNODE_WRITE | DISPATCH_VNODE_EXTEND | DISPATCH_VNODE_RENAME);
        return static_cast<int>(created.integer(1));
    }
    static bool isOpen(int fd) { return fcntl(fd, F_GETFD) >= 0; }

    MacFolderWatches watches_;
    std::shared_ptr<OpenFolder> folder_;
    Handle handle_;
};

TEST_F(FolderWatchTest, theDescriptorStaysOpenUntilTheCancellationWentThrough) {
    int told = 0;
    const int fd = watch([&](const FolderChange& change) {
        told += change.everything && change.names.empty() ? 1 : 0; // the system names nothing
    });
    for (int change = 0; change < 2; ++change) {
        fake::changeVnode(fd);
        fake::runMainQueue();
    }
    EXPECT_EQ(told, 2);
    fake::changeVnode(fd); // on its way when the watch ends
    handle_.reset();
    EXPECT_TRUE(isOpen(fd)) << "its number must not be given to another file yet";
    fake::runMainQueue();
    EXPECT_FALSE(isOpen(fd));
    EXPECT_EQ(told, 2);
}

TEST_F(FolderWatchTest, aWatchMayEndItselfWhileItIsTold) {
    auto kept = std::make_shared<int>(0);
    std::weak_ptr<int> weak = kept;
    const int fd = watch([this, kept](const FolderChange&) {
        handle_.reset();
        ++*kept;
    });
    kept.reset();
    fake::changeVnode(fd);
    fake::runMainQueue();
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(isOpen(fd));
}

TEST_F(FolderWatchTest, whatCannotBeOpenedIsTold) {
    EXPECT_EQ(watches_.open("/nonexistent/folder"), nullptr);
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
