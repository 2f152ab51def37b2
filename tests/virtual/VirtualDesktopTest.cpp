#include "desktops/virtual/Desktop.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Menus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

// What a test relies on in the virtual desktop beyond the contract of its services.
namespace rb {

namespace {

using testing::ElementsAre;

TEST(VirtualRunLoopTest, TimePassesOnlyByAdvancingAndInExactSteps) {
    VirtualRunLoop loop;
    const double start = loop.now();
    std::string order;
    const Handle timer = loop.after(0.6, [&] { order += 't'; });
    for (int i = 0; i < 5; ++i) {
        loop.advance(0.1);
    }
    loop.advance(0.099);
    EXPECT_EQ(order, "");
    loop.advance(0.001);
    EXPECT_EQ(order, "t");
    EXPECT_NEAR(loop.now() - start, 0.6, 1e-9);
}

TEST(VirtualRunLoopTest, EachCallbackSeesTheTimeAtWhichItIsDue) {
    VirtualRunLoop loop;
    const double start = loop.now();
    std::vector<double> times;
    const Handle ticks = loop.every(0.3, 0, [&] { times.push_back(loop.now() - start); });
    const Handle once = loop.after(0.5, [&] { times.push_back(loop.now() - start); });
    loop.advance(1);
    EXPECT_THAT(times, testing::Pointwise(testing::DoubleNear(1e-9), {0.3, 0.5, 0.6, 0.9}));
}

TEST(VirtualRunLoopTest, ToleranceMayBeUsedUpButNeverAddsUp) {
    VirtualRunLoop loop;
    const double start = loop.now();
    loop.setUsesTolerance(true);
    std::vector<double> times;
    const Handle ticks = loop.every(0.5, 0.1, [&] { times.push_back(loop.now() - start); });
    loop.advance(2.05);
    EXPECT_THAT(times, testing::Pointwise(testing::DoubleNear(1e-9), {0.6, 1.1, 1.6}));
}

TEST(VirtualRunLoopTest, PendingTimersAreListedAndTheWallClockJumpsAlone) {
    VirtualRunLoop loop;
    const Handle ticks = loop.every(0.5, 0.05, [] {});
    const Handle once = loop.after(0.2, [] {});
    loop.post([] {});
    const auto timers = loop.pendingTimers();
    ASSERT_EQ(timers.size(), 2U);
    EXPECT_NEAR(timers[0].due, loop.now() + 0.2, 1e-9);
    EXPECT_EQ(timers[1].interval, 0.5);
    EXPECT_EQ(timers[1].tolerance, 0.05);
    loop.setWallClock(2e9);
    loop.advance(0.3);
    EXPECT_NEAR(loop.wallClock(), 2e9 + 0.3, 1e-6);
    EXPECT_EQ(loop.pendingTimers().size(), 1U);
}

using ContractViolationDeathTest = testing::Test;

TEST(ContractViolationDeathTest, ATimerLeftAtTheEndIsTold) {
    EXPECT_DEATH(
        {
            VirtualRunLoop loop;
            static Handle forgotten;
            forgotten = loop.after(1, [] {});
        },
        "1 timer\\(s\\) left");
}

TEST(ContractViolationDeathTest, MainThreadServicesNoticeOtherThreads) {
    VirtualDesktop desktop;
    desktop.runLoop().background(QualityOfService::Utility, [&] { desktop.services().sessionLock.startScreenSaver(); });
    EXPECT_DEATH(desktop.advance(0), "SessionLock::startScreenSaver was called off the main thread");
}

TEST(ContractViolationDeathTest, WorkThatAsksForItselfForEverIsTold) {
    VirtualRunLoop loop;
    std::function<void()> again = [&] { loop.post(again); };
    loop.post(again);
    EXPECT_DEATH(loop.advance(0), "again and again");
}

TEST(VirtualRunLoopTest, TimeCannotPassInsideACallback) {
    VirtualRunLoop loop;
    loop.post([&] { loop.advance(1); });
    EXPECT_THROW(loop.advance(0), ImpossibleAct);
}

TEST(VirtualLayersTest, AnimationsEndInOneOrderWithTheTimers) {
    VirtualDesktop desktop;
    const auto panel = desktop.panels().createPanel({.frame = {0, 0, 100, 40}});
    panel->orderFrontRegardless();
    std::string order;
    const auto animate = [&](const std::string& key, double duration, char name) {
        Animation animation = Animation::basic(KeyPath::Opacity, 0.0, 1.0, duration);
        animation.completion = [&order, name](bool finished) { order += finished ? name : '!'; };
        panel->rootLayer()->addAnimation(key, std::move(animation));
    };
    animate("slow", 0.5, 's');
    animate("fast", 0.22, 'f');
    const Handle timer = desktop.runLoop().after(0.3, [&] { order += 't'; });
    desktop.advance(0.1);
    EXPECT_NEAR(panel->rootLayer()->presentation().opacity, 0.1 / 0.22, 1e-6) << "evaluated at the virtual time";
    desktop.advance(0.12);
    EXPECT_EQ(order, "f");
    desktop.advance(1);
    EXPECT_EQ(order, "fts");
}

TEST(VirtualMenusTest, AUserFindsOnlyWhatIsShownAndEnabled) {
    Menu menu;
    std::string chosen;
    const auto action = [&](MenuItem& sender) { chosen += sender.title + " "; };
    menu.addItem({.title = "Copy", .action = action, .keyEquivalent = "1", .keyEquivalentModifiers = NoModifiers});
    menu.addItem({.title = "Delete",
                  .action = action,
                  .keyEquivalent = "1",
                  .keyEquivalentModifiers = OptionModifier,
                  .alternate = true});
    menu.addItem({.title = "Idle"});
    const auto submenu = std::make_shared<Menu>("More");
    submenu->addItem({.title = "Deep", .action = action});
    menu.addItem({.title = "More", .submenu = submenu});

    menus::choose(menu, "Copy");
    menus::choose(menu, "Delete", OptionModifier);
    menus::choose(menu, "Deep");
    menus::chooseByKey(menu, "1", NoModifiers);
    EXPECT_EQ(chosen, "Copy Delete Deep Copy ");
    EXPECT_THROW(menus::choose(menu, "Delete"), ImpossibleAct) << "Option isn't held";
    EXPECT_THROW(menus::choose(menu, "Copy", OptionModifier), ImpossibleAct) << "the alternate stands in for it";
    EXPECT_THROW(menus::choose(menu, "Idle"), ImpossibleAct);
    EXPECT_THROW(menus::choose(menu, "Missing"), ImpossibleAct);
    EXPECT_THROW(menus::chooseByKey(menu, "q", CommandModifier), ImpossibleAct);
}

TEST(VirtualAlertsTest, AnswersMayBeLaidInStore) {
    VirtualDesktop desktop;
    std::string answers;
    desktop.alerts().answerNext(1);
    desktop.services().alerts.runModal({.messageText = "a", .buttons = {{.title = "x"}, {.title = "y"}}},
                                       [&](std::size_t button) { answers += std::to_string(button); });
    EXPECT_EQ(answers, "") << "never inside the question";
    desktop.advance(0);
    EXPECT_EQ(answers, "1");
    desktop.services().alerts.runModal({.messageText = "b"}, [&](std::size_t) { answers += "b"; });
    desktop.advance(100);
    EXPECT_EQ(answers, "1") << "unanswered alerts stay";
    EXPECT_EQ(desktop.alerts().shown().size(), 2U);
    EXPECT_TRUE(desktop.alerts().current());
    EXPECT_THROW(desktop.alerts().answerNext(1), ImpossibleAct) << "it has only an OK button";
}

// A window of one area that takes the keyboard and the mouse, in the middle of the screen.
class VirtualWindowTest : public testing::Test {
protected:
    VirtualWindowTest() {
        desktop_.pointer().moveTo({10, 10});
        BoxView box;
        box.acceptsFirstResponder = true;
        box.keyDown = [this](const KeyEvent&) { events_ += "key "; };
        box.mouseEntered = [this] { events_ += "in "; };
        box.mouseExited = [this] { events_ += "out "; };
        box.updateLayer = [this] { events_ += "look "; };
        box.layer = Layer::create();
        window_->setContent({.content = std::move(box), .identifier = "area"});
        desktop_.services().application.activateIgnoringOtherApps();
        window_->center();
        window_->makeKeyAndOrderFront();
        window_->makeFirstResponder("area");
        events_.clear();
    }

    VirtualDesktop desktop_;
    std::string events_;
    std::unique_ptr<Window> window_ =
        desktop_.services().windows.createWindow({.contentSize = {400, 300}, .title = "W"});
};

TEST_F(VirtualWindowTest, KeysGoToHotKeysThenAlertsThenTheKeyWindowOfTheActiveProgram) {
    desktop_.keyboard().press({.keyCode = 105});
    EXPECT_EQ(events_, "key ");

    int hot = 0;
    const Handle handler = desktop_.hotKeys().installHandler([&](HotKeyId) { ++hot; });
    const Handle key = desktop_.hotKeys().registerHotKey(105, HotKeyControl, {1, 1});
    desktop_.keyboard().press({.keyCode = 105, .modifierFlags = ControlModifier});
    EXPECT_EQ(hot, 1);
    EXPECT_EQ(events_, "key ");

    std::string answered;
    desktop_.alerts().runModal({.messageText = "?", .buttons = {{.title = "a"}, {.title = "b"}}},
                               [&](std::size_t button) { answered = std::to_string(button); });
    desktop_.keyboard().press({.keyCode = 37});
    EXPECT_THROW(desktop_.windows().keyWindow()->clickBox("area"), ImpossibleAct) << "the alert is modal";
    desktop_.keyboard().press({.keyCode = 53});
    EXPECT_EQ(answered, "1");
    EXPECT_EQ(events_, "key ");

    desktop_.application().deactivate();
    EXPECT_EQ(desktop_.windows().keyWindow(), nullptr);
    EXPECT_FALSE(desktop_.keyboard().press({.keyCode = 105}));
    EXPECT_EQ(events_, "key ");
}

TEST_F(VirtualWindowTest, TheMouseIsNoticedInTheFrontmostWindowOfTheActiveProgram) {
    desktop_.pointer().moveTo({720, 450});
    desktop_.pointer().moveTo({730, 450});
    EXPECT_EQ(events_, "in ");
    const auto cover = desktop_.services().windows.createWindow({.contentSize = {500, 400}, .title = "Cover"});
    cover->center();
    cover->makeKeyAndOrderFront();
    EXPECT_EQ(events_, "in out ");
    cover->orderOut();
    EXPECT_EQ(events_, "in out in ");
    desktop_.application().deactivate();
    EXPECT_EQ(events_, "in out in out ");
}

TEST_F(VirtualWindowTest, AppearanceChangesReachTheAreasOnTheScreen) {
    desktop_.appearance().setDark(true);
    desktop_.appearance().setDark(true);
    EXPECT_EQ(events_, "look ");
    window_->orderOut();
    events_.clear();
    desktop_.appearance().setDark(false);
    EXPECT_EQ(events_, "");
}

// A program that writes down what it is told.
class NotingDelegate final : public ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override { events += "launched "; }
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override {
        events += hasVisibleWindows ? "reopen+ " : "reopen ";
        return hasVisibleWindows;
    }
    void applicationOpenFiles(const std::vector<std::string>& paths) override {
        events += "open:" + paths.front() + " ";
    }
    void applicationNewTextFile(const std::optional<std::string>& /*folder*/) override {}
    void applicationWillTerminate() override { events += "terminate "; }
    bool acceptsPreviewPanelControl() override { return false; }
    void beginPreviewPanelControl(PreviewPanel& /*panel*/) override {}
    void endPreviewPanelControl(PreviewPanel& /*panel*/) override {}

    std::string events;
};

TEST(VirtualApplicationTest, RunsUnderAScriptOrUnderTheTest) {
    VirtualDesktop desktop;
    VirtualApplication& application = desktop.application();
    NotingDelegate stepped;
    EXPECT_THROW(application.reopen(), ImpossibleAct);
    EXPECT_EQ(application.run(stepped), 0);
    EXPECT_TRUE(application.isRunning());
    EXPECT_TRUE(application.reopen(true));
    application.terminate();
    application.terminate();
    EXPECT_EQ(stepped.events, "launched reopen+ terminate ");

    NotingDelegate scripted;
    application.setScript([&] {
        EXPECT_FALSE(application.reopen());
        scripted.events += "script ";
    });
    EXPECT_EQ(application.run(scripted), 0);
    EXPECT_EQ(scripted.events, "launched reopen script terminate ");
    EXPECT_FALSE(application.isRunning());
}

TEST(VirtualScreensTest, ChangesAreToldWhenTheListIsCurrent) {
    VirtualDesktop desktop;
    std::vector<std::size_t> counts;
    const Handle watch =
        desktop.services().screens.onChange([&] { counts.push_back(desktop.services().screens.all().size()); });
    desktop.screens().set({{.id = 1, .frame = {0, 0, 1000, 800}}, {.id = 2, .frame = {1000, 0, 1000, 800}}});
    desktop.screens().setMain(2);
    EXPECT_EQ(desktop.services().screens.main()->id, 2U);
    desktop.screens().set({});
    EXPECT_THAT(counts, ElementsAre(2, 0));
    EXPECT_EQ(desktop.services().screens.main(), std::nullopt);
}

} // namespace

} // namespace rb
