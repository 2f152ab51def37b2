#include "desktops/macos/FullScreenSpaces.h"

#include "tests/macos/MacTest.h"

namespace rb {

namespace {

id spacesAnswer = nil; // what the window server says
int askedConnection = 0;

int mainConnection() {
    return 77;
}

const void* copySpaces(int connection) {
    askedConnection = connection;
    return (__bridge_retained const void*)spacesAnswer;
}

class FullScreenSpacesTest : public fake::MacTest {
protected:
    void TearDown() override {
        spacesAnswer = nil;
        MacTest::TearDown();
    }
    static void provideBoth() {
        fake::provideFunction("CGSMainConnectionID", reinterpret_cast<void*>(mainConnection));
        fake::provideFunction("CGSCopyManagedDisplaySpaces", reinterpret_cast<void*>(copySpaces));
    }
    static NSDictionary* display(NSString* identifier, int type) {
        return @{@"Display Identifier" : identifier, @"Current Space" : @{@"type" : @(type), @"id64" : @5}};
    }
    bool isShown(id answer) {
        spacesAnswer = answer;
        return spaces_.isShownOn(69);
    }

    FullScreenSpaces spaces_;
};

TEST_F(FullScreenSpacesTest, readsTheTypeOfTheCurrentSpace) {
    provideBoth();
    EXPECT_TRUE(isShown(@[ display(@"Main", 4) ])) << "a single entry is taken, whatever it is called";
    EXPECT_EQ(askedConnection, 77);
    EXPECT_FALSE(isShown(@[ display(@"Main", 0) ]));
    EXPECT_EQ(fake::calls("dlsym").size(), 2u) << "looked up once";
}

TEST_F(FullScreenSpacesTest, findsTheDisplayByItsIdentifier) {
    provideBoth();
    fake::answer("CFUUIDCreateString", @"B");
    NSArray* displays = @[ display(@"A", 0), display(@"B", 4) ];
    EXPECT_TRUE(isShown(displays));
    EXPECT_EQ(fake::lastCall("CGDisplayCreateUUIDFromDisplayID").integer(0), 69);
    fake::answer("CFUUIDCreateString", @"A");
    EXPECT_FALSE(isShown(displays));
    fake::answer("CFUUIDCreateString", @"C");
    EXPECT_FALSE(isShown(displays));
    fake::answer("CGDisplayCreateUUIDFromDisplayID", nullptr);
    EXPECT_FALSE(isShown(displays)) << "a display without an identifier";
}

TEST_F(FullScreenSpacesTest, isFalseWhereTheWindowServerDoesNotTell) {
    EXPECT_FALSE(isShown(@[ display(@"Main", 4) ])) << "no such functions";
    fake::provideFunction("CGSMainConnectionID", reinterpret_cast<void*>(mainConnection));
    FullScreenSpaces onlyOne;
    EXPECT_FALSE(onlyOne.isShownOn(69));
}

TEST_F(FullScreenSpacesTest, isFalseForAnythingElse) {
    provideBoth();
    EXPECT_FALSE(isShown(nil));
    EXPECT_FALSE(isShown(display(@"Main", 4)));
    EXPECT_FALSE(isShown(@[]));
    EXPECT_FALSE(isShown(@[ @"Main" ]));
    EXPECT_FALSE(isShown((@[ display(@"Main", 4), @4 ])));
    EXPECT_FALSE(isShown(@[ @{@"Current Space" : @4} ]));
    EXPECT_FALSE(isShown(@[ @{@"Current Space" : @{@"type" : @"4"}} ]));
    EXPECT_FALSE(isShown(@[ @{} ]));
}

} // namespace

} // namespace rb
