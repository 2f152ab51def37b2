#include "displays/WindowPlacement.h"

#include "tests/displays/DisplaysFixture.h"

namespace rb {

namespace {

class DisplaysWindowTest : public DisplaysTest {
protected:
    double offset() { return window().scrollOffset(pageScrollIdentifier); }
};

TEST_F(DisplaysWindowTest, IsAsItShouldBe) {
    opened();
    const WindowSpec& spec = window().spec();
    EXPECT_EQ(spec.contentSize, (Size{920, 720}));
    EXPECT_EQ(spec.minimumSize, (Size{840, 480}));
    EXPECT_TRUE(spec.resizable && spec.closable && spec.dark && spec.transparentTitleBar);
    EXPECT_EQ(window().frameOf("page").width, 920 - 210);
    window().clickButton("全部熄屏");
    window().clickButton("设置快捷键…");
    EXPECT_EQ(locks_, 1);
    EXPECT_EQ(settings_, 1);
    EXPECT_EQ(window().frameOf("row.0.mode").width + 10 + 86, 710 - 48 - 40) << "picker and button share the row";
}

TEST_F(DisplaysWindowTest, PagesAreChosenInTheSidebar) {
    opened();
    EXPECT_THAT(window().reveals(), testing::ElementsAre(pageStackIdentifier)) << "once the first pass is through";
    window().clickButton("线缆与供电");
    EXPECT_THAT(dump(window().content()), testing::HasSubstr("暂无 USB-C 连接详情"));
    EXPECT_EQ(window().reveals().size(), 2U);
    window().clickButton("线缆与供电");
    EXPECT_EQ(window().reveals().size(), 2U) << "the same page again";
    window().clickCheckBox("显示更多技术详情");
    EXPECT_THAT(dump(window().content()), testing::HasSubstr("[x] 显示更多技术详情"));
    window().clickButton("刷新");
    EXPECT_THAT(dump(window().content()), testing::HasSubstr("正在读取连接…"));
    desktop_.advance(1);
    window().clickButton("显示器");
    EXPECT_EQ(window().reveals().size(), 3U);
}

TEST_F(DisplaysWindowTest, OnlyAnAutomaticRefreshKeepsThePageWhereItIs) {
    setDisplays({builtin(), external(), external(8, "LG"), external(9, "Samsung")});
    snapshot_ = R"({"ports":[{"connectionActive":true})";
    for (int port = 0; port < 8; ++port) {
        snapshot_ += R"(,{"connectionActive":true})";
    }
    snapshot_ += "]}";
    opened();
    window().scroll("page", 300);
    desktop_.hardware().changeUSB();
    desktop_.advance(3);
    EXPECT_EQ(passes(), 2);
    EXPECT_EQ(offset(), 300);
    window().clickButton("刷新");
    desktop_.advance(1);
    EXPECT_EQ(offset(), 0);
    window().scroll("page", 300);
    window().clickButton("线缆与供电");
    EXPECT_EQ(offset(), 0);
    answers_.erase("list"); // an automatic refresh that takes its time
    desktop_.advance(0.1);
    window().scroll("page", 200);
    desktop_.hardware().wake();
    desktop_.advance(1.6);
    EXPECT_TRUE(controller().busy());
    EXPECT_EQ(offset(), 200);
    window().clickButton("显示器");
    desktop_.advance(10);
    EXPECT_EQ(offset(), 0) << "the place on one page is none on the other";
}

TEST_F(DisplaysWindowTest, FollowsWhenItsScreenGoes) {
    opened();
    window().drag({1440 + 200, 100, 1000, 748});
    desktop_.advance(3);
    EXPECT_EQ(window().frame().x, 1640) << "well placed on the second screen";
    setDisplays({builtin()});
    desktop_.screens().set({{.id = 1, .frame = {0, 0, 960, 600}, .visibleFrame = {0, 0, 960, 576}}});
    desktop_.advance(1.5);
    EXPECT_EQ(window().frame(), (Rect{0, 0, 960, 576})) << "clipped and centred";
}

TEST_F(DisplaysWindowTest, ComesForwardOnlyWhereTheUserIs) {
    opened();
    auto other = desktop_.services().windows.createWindow({.contentSize = {100, 100}, .title = "Other"});
    other->makeKeyAndOrderFront();
    desktop_.hardware().wake();
    desktop_.advance(3);
    EXPECT_EQ(desktop_.windows().visible().back()->spec().title, "Other");
    window().makeKeyAndOrderFront();
    window().miniaturize(true);
    window().drag({5000, 5000, 920, 748});
    desktop_.hardware().wake();
    desktop_.advance(3);
    EXPECT_EQ(window().frame().x, 5000) << "a miniaturized window is left alone";
}

TEST(WindowPlacementTest, AWindowMustBeSeenAndHeld) {
    const Screen screen{.id = 1, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 50, 1440, 826}};
    const auto stays = [&](const Rect& frame) { return !betterFrame(frame, {screen}, screen); };
    EXPECT_TRUE(stays({100, 100, 920, 700}));
    EXPECT_TRUE(stays({1440 - 160, 100, 920, 700}));
    EXPECT_FALSE(stays({1440 - 159, 100, 920, 700}));
    EXPECT_TRUE(stays({0, 876 + 24 - 700, 920, 700}));
    EXPECT_FALSE(stays({0, 876 + 25 - 700, 920, 700})) << "the title bar is above the top";
    EXPECT_FALSE(stays({0, 50 + 99 - 700, 920, 700}));
    EXPECT_EQ(betterFrame({3000, 0, 920, 700}, {screen}, screen), (Rect{260, 113, 920, 700}));
    EXPECT_EQ(betterFrame({3000, 0, 2000, 700}, {screen}, std::nullopt), (Rect{0, 113, 1440, 700}));
    EXPECT_EQ(betterFrame({3000, 0, 920, 700}, {}, std::nullopt), std::nullopt);
}

} // namespace

} // namespace rb
