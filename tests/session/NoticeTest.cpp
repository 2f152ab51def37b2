#include "tests/session/SessionTest.h"

// Notices on a real screen: they come, stay out of the way and go.
namespace rb {

namespace {

class NoticeTest : public SessionTest {
protected:
    NoticeTest()
        : SessionTest({.compositor = true}) {}
};

TEST_F(NoticeTest, ANoticeShowsUnderTheBarAndTakesNoFocus) {
    const xcb_window_t terminal = startFocusedTerminal();
    startRookBay();
    const WindowFacts bar = x().viewableOfClass(menuBarClass).front();
    EventLog log(session().display());
    Program& gallery = session().start({GALLERY_PROGRAM});
    const auto isNotice = [](const SessionEvent& event) {
        return event.kind == SessionEventKind::Mapped &&
               (event.window.instance == panelClass || event.window.className == panelClass);
    };
    const auto shown = log.waitFor(isNotice);
    ASSERT_TRUE(shown);
    ASSERT_TRUE(waitUntil([&] { return !x().viewableOfClass(panelClass).empty(); }));
    const WindowFacts notice = x().viewableOfClass(panelClass).front();
    EXPECT_TRUE(notice.overrideRedirect) << "above everything, on every desktop";
    EXPECT_NEAR(notice.x + notice.width / 2.0, x().screen().width_in_pixels / 2.0, 1);
    EXPECT_LE(notice.y, bar.y + bar.height + 6);
    EXPECT_GE(notice.y + notice.height, bar.y + bar.height + 6 + 38);
    EXPECT_EQ(x().focus(), terminal);
    x().movePointer(notice.x + notice.width / 2, notice.y + notice.height / 2);
    EXPECT_NE(x().windowUnderPointer(), notice.window) << "clicks go through";
    EXPECT_TRUE(waitUntil([&] { return log.count(isNotice) == 3; }, 8)) << "three notices, one after another";
    EXPECT_EQ(x().focus(), terminal);
    EXPECT_EQ(gallery.waitForExit(6), 0);
    EXPECT_TRUE(x().viewableOfClass(panelClass).empty());
}

} // namespace

} // namespace rb
