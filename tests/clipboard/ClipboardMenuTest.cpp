#include "tests/clipboard/ClipboardFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* hint = "点选即复制 · 按住 ⌥ 删除单条";

class ClipboardMenuTest : public ClipboardHistoryTest {
protected:
    std::string titleOf(const std::string& text) {
        copyText(text);
        return entry(0).title;
    }
    std::string subtitleAfter(double seconds) {
        desktop_.runLoop().setWallClock(history_->items().at(0)->date + seconds);
        return entry(0).subtitle;
    }
    static std::string picture(const MenuItem& item) {
        const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&item.image);
        return bitmap ? dynamic_cast<const VirtualBitmap&>(**bitmap).content() : "";
    }
    static std::string symbol(const MenuItem& item) {
        const auto* found = std::get_if<Symbol>(&item.image);
        return found ? found->name : "";
    }
};

TEST_F(ClipboardMenuTest, AnEmptyHistoryOffersOnlyThePause) {
    ASSERT_EQ(menu().items().size(), 5U);
    EXPECT_EQ(history_->menu()->title(), "剪贴板历史");
    const Menu& empty = *history_->menu();
    EXPECT_EQ(empty.items()[0]->title, "还没有复制记录");
    EXPECT_FALSE(empty.isEnabled(*empty.items()[0]));
    EXPECT_TRUE(empty.items()[1]->separator);
    EXPECT_EQ(empty.items()[2]->title, hint);
    EXPECT_FALSE(empty.isEnabled(*empty.items()[2]));
    EXPECT_EQ(empty.items()[3]->title, "暂停记录");
    EXPECT_FALSE(empty.items()[3]->on);
    EXPECT_EQ(empty.items()[4]->title, "清空历史…");
    EXPECT_FALSE(empty.isEnabled(*empty.items()[4]));
    menus::choose(menu(), "暂停记录");
    EXPECT_EQ(menu().items()[0]->title, "记录已暂停");
    EXPECT_TRUE(last(1).on);
}

TEST_F(ClipboardMenuTest, EntriesHaveKeysAndAlternates) {
    for (int i = 10; i >= 1; --i) {
        copyText("entry " + std::to_string(i));
    }
    const auto items = menu().items();
    ASSERT_EQ(items.size(), 20U + 4);
    for (std::size_t place = 0; place < 10; ++place) {
        const MenuItem& main = *items[2 * place];
        const MenuItem& alternate = *items[2 * place + 1];
        EXPECT_EQ(main.title, "entry " + std::to_string(place + 1));
        EXPECT_EQ(main.keyEquivalent, place < 9 ? std::to_string(place + 1) : "");
        EXPECT_EQ(main.keyEquivalentModifiers, NoModifiers);
        EXPECT_TRUE(history_->menu()->isEnabled(main));
        EXPECT_TRUE(alternate.alternate);
        EXPECT_EQ(alternate.title, "删除  " + main.title);
        EXPECT_EQ(alternate.keyEquivalent, main.keyEquivalent);
        EXPECT_EQ(alternate.keyEquivalentModifiers, OptionModifier);
        EXPECT_EQ(symbol(alternate), "trash");
    }
    menus::choose(menu(), "删除  entry 10", OptionModifier);
    menus::chooseByKey(menu(), "2", OptionModifier);
    EXPECT_EQ(titles().size(), 8U);
    EXPECT_THAT(titles(), testing::Not(testing::Contains("entry 2")));
    EXPECT_EQ(desktop_.pasteboard().contents().text, "entry 1") << "the pasteboard isn't touched";
    menus::chooseByKey(menu(), "3", NoModifiers);
    EXPECT_EQ(desktop_.pasteboard().contents().text, "entry 4");
    EXPECT_THROW(menus::choose(menu(), "删除  entry 1"), ImpossibleAct) << "only while Option is held";
}

TEST_F(ClipboardMenuTest, TextsAreTitledByTheirFirstLineThatIsNotBlank) {
    EXPECT_EQ(titleOf("\n  \t\n\u3000 first\tline \nsecond"), "first line");
    EXPECT_EQ(titleOf("\r\n \r\nfrom Windows\r\nmore"), "from Windows");
    EXPECT_EQ(titleOf("\u2028one\u2029two"), "one");
    EXPECT_EQ(titleOf(std::string(38, 'x')), std::string(38, 'x'));
    EXPECT_EQ(titleOf(std::string(39, 'x')), std::string(38, 'x') + "…");
    std::string chinese;
    for (int i = 0; i < 39; ++i) {
        chinese += "字";
    }
    EXPECT_EQ(titleOf(chinese), chinese.substr(0, 38 * 3) + "…");
    EXPECT_EQ(titleOf(std::string(37, 'x') + "😀y"), std::string(37, 'x') + "…") << "no half character";
    EXPECT_EQ(titleOf("\u202Eabc"), "\u202Eabc");
    copyText("x");
    RBClipItem blank = RBClipItem::ofText(" \n\t", 0);
    EXPECT_EQ(history_->titleFor(blank), "（空白文字）");
}

TEST_F(ClipboardMenuTest, TextsShowLinksAndTheirWholeText) {
    titleOf(" \nhttps://example.org/a");
    EXPECT_EQ(symbol(entry(0)), "link");
    titleOf("see http://example.org");
    EXPECT_EQ(symbol(entry(0)), "text.alignleft");
    EXPECT_EQ(entry(0).toolTip, "see http://example.org");
    titleOf(std::string(600, 'a'));
    EXPECT_EQ(entry(0).toolTip, std::string(600, 'a'));
    titleOf(std::string(601, 'b'));
    EXPECT_EQ(entry(0).toolTip, std::string(600, 'b') + "…");
    titleOf("中文😀");
    EXPECT_EQ(entry(0).subtitle, "刚刚 · 4 字");
}

TEST_F(ClipboardMenuTest, AgesAreRoundedDown) {
    copyText("abc");
    EXPECT_EQ(subtitleAfter(-100), "刚刚 · 3 字") << "the clock was set back";
    EXPECT_EQ(subtitleAfter(59), "刚刚 · 3 字");
    EXPECT_EQ(subtitleAfter(60), "1 分钟前 · 3 字");
    EXPECT_EQ(subtitleAfter(3599), "59 分钟前 · 3 字");
    EXPECT_EQ(subtitleAfter(3600), "1 小时前 · 3 字");
    EXPECT_EQ(subtitleAfter(86399), "23 小时前 · 3 字");
    EXPECT_EQ(subtitleAfter(86400 * 3 - 1), "2 天前 · 3 字");
}

TEST_F(ClipboardMenuTest, PicturesShowTheirSizeAndASquare) {
    copy({.data = {{PasteboardType::Png, bytes("640x480")}}});
    EXPECT_EQ(entry(0).title, "图片  640 × 480");
    EXPECT_EQ(entry(0).subtitle, "刚刚 · 7 字节");
    EXPECT_EQ(picture(entry(0)), "thumb 640x480 radius 5");
    EXPECT_EQ(std::get<std::shared_ptr<const Bitmap>>(entry(0).image)->pointSize(), (Size{26, 26}));
    EXPECT_EQ(entry(0).toolTip, "");
    menu();
    EXPECT_EQ(desktop_.thumbnails().decoded(), 1) << "decoded once, whenever the menu opens";
    Bytes large = bytes("8x8 ");
    large.resize(2'149'000, ' ');
    copy({.data = {{PasteboardType::Png, large}}});
    EXPECT_EQ(entry(0).subtitle, "刚刚 · 2.1 MB");
    copy({.data = {{PasteboardType::Png, bytes("damaged")}}});
    EXPECT_EQ(entry(0).title, "图片");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(entry(0).image));
}

TEST_F(ClipboardMenuTest, PicturesAreDecodedAheadOfTheMenu) {
    copy({.data = {{PasteboardType::Png, bytes("30x20")}}});
    copy({.data = {{PasteboardType::Png, bytes("damaged")}}});
    EXPECT_EQ(desktop_.thumbnails().decoded(), 0) << "not when they are copied";
    history_->prepareMenu();
    history_->prepareMenu();
    EXPECT_EQ(desktop_.thumbnails().decoded(), 0) << "nor while the menu opens";
    desktop_.advance(0);
    EXPECT_EQ(desktop_.thumbnails().decoded(), 2);
    EXPECT_EQ(entry(1).title, "图片  30 × 20");
    EXPECT_EQ(picture(entry(1)), "thumb 30x20 radius 5");
    copy({.data = {{PasteboardType::Png, bytes("1x1")}}});
    history_->prepareMenu();
    history_.reset(); // the program ends meanwhile
    desktop_.advance(1);
}

TEST_F(ClipboardMenuTest, FilesShowTheirFirstNameFolderAndIcon) {
    copy({.files = {"/Users/rb/Notes/a.txt", "/Users/rb/b.txt"}});
    EXPECT_EQ(entry(0).title, "a.txt 等 2 项");
    EXPECT_EQ(entry(0).subtitle, "刚刚 · Notes");
    EXPECT_EQ(entry(0).toolTip, "/Users/rb/Notes/a.txt\n/Users/rb/b.txt");
    EXPECT_EQ(picture(entry(0)), "icon /Users/rb/Notes/a.txt");
    EXPECT_EQ(std::get<std::shared_ptr<const Bitmap>>(entry(0).image)->pointSize(), (Size{22, 22}));
    copy({.files = {"/only"}});
    EXPECT_EQ(entry(0).title, "only");
}

TEST_F(ClipboardMenuTest, ChoosingCopiesMovesToTheTopAndRecordsNothing) {
    copy({.data = {{PasteboardType::Tiff, bytes("9x9")}}});
    copyText(" with spaces\n");
    copyText("newest");
    desktop_.advance(10);
    const double before = desktop_.runLoop().wallClock();
    menus::chooseByKey(menu(), "2", NoModifiers);
    EXPECT_EQ(desktop_.pasteboard().contents().text, " with spaces\n");
    EXPECT_EQ(notice(), expected("已复制，按 ⌘V 粘贴", "doc.on.clipboard.fill", SystemColor::Green));
    EXPECT_EQ(history_->lastChangeCount(), desktop_.pasteboard().changeCount());
    EXPECT_THAT(titles(), ElementsAre("with spaces", "newest", "图片  9 × 9"));
    EXPECT_EQ(history_->items()[0]->date, before);
    const int reads = desktop_.pasteboard().reads();
    desktop_.advance(5);
    EXPECT_EQ(desktop_.pasteboard().reads(), reads) << "our own writing isn't read";
    menus::chooseByKey(menu(), "3", NoModifiers);
    EXPECT_EQ(desktop_.pasteboard().contents().data.at(PasteboardType::Tiff), bytes("9x9"));
    EXPECT_EQ(history_->items().size(), 3U);
    const int writes = desktop_.archives().writes();
    desktop_.advance(2);
    EXPECT_EQ(desktop_.archives().writes(), writes + 1);
}

TEST_F(ClipboardMenuTest, FilesAreCopiedAsFarAsTheyStillExist) {
    desktop_.files().addDocument("/b");
    desktop_.files().addFolder("/c");
    copy({.files = {"/a", "/b", "/c"}});
    menus::chooseByKey(menu(), "1", NoModifiers);
    EXPECT_THAT(desktop_.pasteboard().contents().files, ElementsAre("/b", "/c"));
    EXPECT_THAT(*history_->items()[0]->paths(), ElementsAre("/a", "/b", "/c")) << "the entry stays whole";
    desktop_.files().remove("/b");
    desktop_.files().remove("/c");
    copyText("on the pasteboard");
    menus::chooseByKey(menu(), "2", NoModifiers);
    EXPECT_EQ(notice(), expected("原文件已不存在", "exclamationmark.triangle.fill", SystemColor::Orange));
    EXPECT_EQ(desktop_.pasteboard().contents().text, "on the pasteboard");
    EXPECT_THAT(titles(), ElementsAre("on the pasteboard", "a 等 3 项")) << "it stays where it is";
    desktop_.pasteboard().setRefusesWrites(true);
    menus::chooseByKey(menu(), "1", NoModifiers);
    EXPECT_EQ(notice(), expected("复制失败", "exclamationmark.triangle.fill", SystemColor::Orange));
}

// The archive's file was damaged while the program ran.
TEST_F(ClipboardMenuTest, APictureThatCanNotBeReadAnyMoreIsNotCopied) {
    struct Lost : ByteStore {
        std::uint64_t size() const override { return 100; }
        bool read(std::uint64_t /*offset*/, std::span<std::uint8_t> /*into*/) const override { return false; }
    };
    copy({.data = {{PasteboardType::Png, bytes("4x3")}}});
    history_->items()[0]->imageData()->moveTo({std::make_shared<const Lost>(), 0});
    copyText("on the pasteboard");
    EXPECT_THAT(titles(), ElementsAre("on the pasteboard", "图片"));
    menus::chooseByKey(menu(), "2", NoModifiers);
    EXPECT_EQ(notice(), expected("复制失败", "exclamationmark.triangle.fill", SystemColor::Orange));
    EXPECT_EQ(desktop_.pasteboard().contents().text, "on the pasteboard");
    copy({.data = {{PasteboardType::Png, bytes("4x3")}}});
    EXPECT_EQ(history_->items().size(), 3U) << "not known to be the same";
}

TEST_F(ClipboardMenuTest, AnEntryThatWentMeanwhileCanStillBeCopied) {
    copyText("A");
    const auto item = menu().items()[0];
    const auto alternate = menu().items()[1];
    alternate->action(*alternate);
    EXPECT_THAT(history_->items(), IsEmpty());
    item->action(*item); // of the menu that is still open
    EXPECT_THAT(titles(), ElementsAre("A"));
    item->representedObject.reset();
    item->action(*item);
    EXPECT_THAT(titles(), ElementsAre("A"));
}

TEST_F(ClipboardMenuTest, ClearingAsksFirst) {
    copyText("A");
    copyText("B");
    menus::choose(menu(), "清空历史…");
    EXPECT_TRUE(desktop_.application().isActive());
    desktop_.advance(0);
    EXPECT_EQ(desktop_.alerts().current(),
              (Alert{.messageText = "清空剪贴板历史？",
                     .informativeText = "将删除全部 2 条记录，当前剪贴板内容不受影响。",
                     .buttons = {{.title = "清空", .destructive = true}, {.title = "取消"}}}));
    desktop_.alerts().closeCurrent();
    desktop_.advance(2);
    EXPECT_EQ(titles().size(), 2U);
    menus::choose(menu(), "清空历史…");
    desktop_.alerts().answerNext(0);
    desktop_.advance(2);
    EXPECT_THAT(titles(), ElementsAre("还没有复制记录"));
    EXPECT_EQ(desktop_.pasteboard().contents().text, "B");
    start();
    EXPECT_THAT(history_->items(), IsEmpty()) << "and from the archive";
}

} // namespace

} // namespace rb
