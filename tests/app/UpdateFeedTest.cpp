#include "app/DefaultsKeys.h"
#include "tests/app/AppFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Check = VirtualUpdates::Check;

constexpr const char* primary = "https://primary.example/appcast.xml";
constexpr const char* mirror = "https://mirror.example/appcast.xml";

class UpdateFeedTest : public AppTest {
protected:
    UpdateFeedTest() {
        VirtualApplication& application = desktop_.application();
        application.setInfoString("SUFeedURL", primary);
        application.setInfoString("SUPublicEDKey", "key");
        application.setInfoString("RBMirrorFeedURL", mirror);
    }
    static VirtualURLSessions::Server answering(double delay, int status = 200,
                                                const std::string& text = "<?xml?><rss version=\"2.0\"/>") {
        return {.delay = delay, .answer = {.status = status, .text = text}};
    }
    static VirtualURLSessions::Server dead() { return {.delay = 1000}; }
    static VirtualURLSessions::Server broken(double delay) { return {.delay = delay, .answer = {.failed = true}}; }
    void serve(const VirtualURLSessions::Server& first, const VirtualURLSessions::Server& second) {
        desktop_.urlSessions().setServer(primary, first);
        desktop_.urlSessions().setServer(mirror, second);
    }
    void click() { desktop_.chooseMenuItem("检查更新…"); }
    std::vector<Check> checks() { return desktop_.updates().checks(); }
    bool usesMirror() { return desktop_.userDefaults().boolForKey(DefaultsKey::RBUseMirrorFeed); }
    std::optional<PropertyValue> stored() { return desktop_.userDefaults().objectForKey(DefaultsKey::RBUseMirrorFeed); }
};

TEST_F(UpdateFeedTest, WithoutAMirrorTheCheckStartsAtOnce) {
    desktop_.application().setInfoString("RBMirrorFeedURL", "");
    desktop_.userDefaults().setObject(DefaultsKey::RBUseMirrorFeed, true); // of a time when there was one
    launch();
    click();
    EXPECT_THAT(checks(), ElementsAre(std::nullopt));
    EXPECT_EQ(desktop_.urlSessions().sessions(), 0U);
    desktop_.updates().finishCycle(UpdateError{.domain = UpdateError::frameworkDomain, .code = 1002});
    EXPECT_EQ(stored(), PropertyValue(true)) << "nothing to change to";
}

TEST_F(UpdateFeedTest, TheFirstFeedThatAnswersWellIsChosen) {
    struct Case {
        const char* name;
        VirtualURLSessions::Server first;
        VirtualURLSessions::Server second;
        bool before;
        bool after;
        double time; // of the check, after the click
    };
    const std::vector<Case> cases{
        {"both, primary first", answering(0.1), answering(0.2), true, false, 0.1},
        {"both, mirror first", answering(0.3), answering(0.2), false, true, 0.2},
        {"mirror, primary dead", dead(), answering(1), false, true, 1},
        {"primary at the last moment", answering(6), dead(), true, false, 6},
        {"both dead", dead(), dead(), true, true, 6},
        {"both break off", broken(0.5), broken(2), false, false, 2},
        {"a page instead of a feed", answering(0.1, 200, "<html>"), answering(3), false, true, 3},
        {"an error with a feed", answering(0.1, 404), answering(3), false, true, 3},
        {"a cached answer doesn't count", answering(0.1, 304), broken(1), true, true, 1},
        {"an empty body", answering(0.1, 200, ""), broken(0.2), true, true, 0.2},
    };
    for (const Case& tested : cases) {
        SCOPED_TRACE(tested.name);
        VirtualDesktop desktop;
        desktop.application().setInfoString("SUFeedURL", primary);
        desktop.application().setInfoString("SUPublicEDKey", "key");
        desktop.application().setInfoString("RBMirrorFeedURL", mirror);
        desktop.urlSessions().setServer(primary, tested.first);
        desktop.urlSessions().setServer(mirror, tested.second);
        desktop.userDefaults().setObject(DefaultsKey::RBUseMirrorFeed, tested.before);
        AppDelegate app(desktop.services());
        desktop.application().run(app);
        desktop.chooseMenuItem("检查更新…");
        EXPECT_THAT(desktop.urlSessions().requests(), ElementsAre(primary, mirror)) << "both at the same time";
        EXPECT_EQ(desktop.urlSessions().lastTimeout(), 6.0);
        desktop.advance(tested.time - 0.01);
        EXPECT_THAT(desktop.updates().checks(), IsEmpty());
        desktop.advance(0.02);
        EXPECT_THAT(desktop.updates().checks(), ElementsAre(tested.after ? Check(mirror) : Check()));
        EXPECT_EQ(desktop.userDefaults().boolForKey(DefaultsKey::RBUseMirrorFeed), tested.after);
        desktop.advance(20);
        EXPECT_EQ(desktop.updates().checks().size(), 1U) << "late answers are ignored";
        EXPECT_EQ(desktop.userDefaults().boolForKey(DefaultsKey::RBUseMirrorFeed), tested.after);
        EXPECT_EQ(desktop.urlSessions().live(), 0U);
        desktop.application().terminate();
    }
}

TEST_F(UpdateFeedTest, ClicksDuringAProbeAreIgnored) {
    serve(answering(1), answering(2));
    launch();
    click();
    click();
    desktop_.advance(0.5);
    click();
    EXPECT_EQ(desktop_.urlSessions().sessions(), 1U);
    desktop_.advance(10);
    EXPECT_EQ(checks().size(), 1U);
    click();
    EXPECT_EQ(desktop_.urlSessions().sessions(), 2U) << "each click probes anew";
    quit();
    desktop_.advance(10);
    EXPECT_EQ(checks().size(), 1U) << "a probe ends with the program";
}

TEST_F(UpdateFeedTest, AnAddressThatIsNoneCountsAsFailed) {
    desktop_.urlSessions().setServer(mirror, answering(2));
    launch();
    click();
    EXPECT_THAT(checks(), IsEmpty()) << "the mirror can still win";
    desktop_.advance(2);
    EXPECT_THAT(checks(), ElementsAre(Check(mirror)));
}

TEST_F(UpdateFeedTest, WithoutAnyAddressTheCheckStillRuns) {
    launch();
    click();
    EXPECT_THAT(checks(), ElementsAre(std::nullopt));
    EXPECT_EQ(stored(), std::nullopt) << "the choice stays as it was";
}

TEST_F(UpdateFeedTest, OnlyACycleThatTheFeedFailedChangesTheFeed) {
    launch();
    const auto finish = [this](const char* domain, std::int64_t code) {
        desktop_.updates().finishCycle(UpdateError{.domain = domain, .code = code});
        return usesMirror();
    };
    desktop_.updates().finishCycle(std::nullopt);
    EXPECT_EQ(stored(), std::nullopt);
    EXPECT_FALSE(finish("SUSparkleErrorDomain", 1001)) << "nothing new";
    EXPECT_FALSE(finish("SUSparkleErrorDomain", 3001)) << "a wrong signature";
    EXPECT_FALSE(finish("NSURLErrorDomain", 1002)) << "somebody else's number";
    EXPECT_TRUE(finish("SUSparkleErrorDomain", 1002));
    EXPECT_TRUE(finish("SUSparkleErrorDomain", 2002));
    EXPECT_FALSE(finish("SUSparkleErrorDomain", 2001));
    EXPECT_TRUE(finish("SUSparkleErrorDomain", 1002));
    desktop_.updates().checkByItself();
    EXPECT_THAT(checks(), ElementsAre(Check(mirror))) << "the next check goes to the other one";
    quit();
    launch();
    desktop_.updates().checkByItself();
    EXPECT_EQ(checks().back(), Check(mirror)) << "remembered";
}

} // namespace

} // namespace rb
