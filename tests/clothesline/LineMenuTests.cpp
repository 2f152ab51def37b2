#include "tests/clothesline/HandsFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LineMenuTest : public HandsTest {
protected:
    Menu& menu() {
        menus::open(*line->menu());
        return *line->menu();
    }
    std::string firstTitle() { return menu().items().front()->title; }
    bool checked(const std::string& title) { return menus::findItem(menu(), title)->on; }
};

TEST_F(LineMenuTest, SaysWhatThereIsAndWhatItDoes) {
    EXPECT_EQ(firstTitle(), "放下晾衣绳");
    hang(3);
    desktop.files().remove("/Users/rb/b");
    EXPECT_EQ(firstTitle(), "放下晾衣绳（2 件）") << "what is gone doesn't count";
    std::vector<std::string> titles;
    for (const auto& item : menu().items()) {
        titles.push_back(item->separator ? "-" : item->title);
    }
    EXPECT_THAT(titles,
                ElementsAre("放下晾衣绳（2 件）", "全部取下", "-", "新截图自动挂上",
                            "截图直接挂上（不放桌面、无缩略图等待）", "拖文件到屏幕顶部时放下", "鼠标停在菜单栏时放下",
                            "音效", "-", "单击复制 · 双击打开 · 长按快速查看", "拖进文件夹＝移过去 · 拖进 App＝拷贝",
                            "把卡片拖到绳上的文件夹卡片里＝放进那个文件夹", "按住 ⇧ 左右拖动卡片＝调整顺序",
                            "晾衣绳动画移植自 Tendedero（MIT）"));
    EXPECT_FALSE(menu().isEnabled(*menu().items().back())) << "notes can't be chosen";
    EXPECT_EQ(menu().items()[4]->indentationLevel, 1);
}

TEST_F(LineMenuTest, OpensTheLineForAVisitAndClosesIt) {
    menus::choose(menu(), "放下晾衣绳");
    desktop.advance(5);
    EXPECT_TRUE(line->revealed());
    EXPECT_EQ(firstTitle(), "收起晾衣绳");
    menus::choose(menu(), "收起晾衣绳");
    EXPECT_FALSE(line->revealed());
}

TEST_F(LineMenuTest, TakesEverythingDown) {
    menus::choose(menu(), "全部取下"); // nothing there, but it can be chosen
    EXPECT_EQ(desktop.panels().visible().size(), 0U);
    hang(3);
    menus::choose(menu(), "全部取下");
    EXPECT_THAT(paths(), IsEmpty());
    EXPECT_THAT(desktop.sounds().heard(), IsEmpty());
    EXPECT_EQ(desktop.panels().visible().size(), 1U) << "the notice";
    desktop.advance(5);
    hang(3);
    reveal();
    const std::size_t before = desktop.panels().visible().size();
    menus::choose(menu(), "全部取下");
    desktop.advance(0.01);
    EXPECT_EQ(line->items().size(), 2U);
    desktop.advance(0.12);
    EXPECT_THAT(paths(), IsEmpty());
    EXPECT_EQ(desktop.sounds().heard().size(), 1U);
    EXPECT_EQ(desktop.panels().visible().size(), before + 3) << "three fall, no notice";
}

TEST_F(LineMenuTest, SwitchesItsSettings) {
    for (const char* title : {"拖文件到屏幕顶部时放下", "鼠标停在菜单栏时放下", "音效"}) {
        EXPECT_TRUE(checked(title)) << title;
        menus::choose(menu(), title);
        EXPECT_FALSE(checked(title)) << title;
    }
    EXPECT_FALSE(line->setting("ClotheslineSound"));
    menus::choose(menu(), "音效");
    EXPECT_TRUE(line->setting("ClotheslineSound"));
}

} // namespace
} // namespace rb
