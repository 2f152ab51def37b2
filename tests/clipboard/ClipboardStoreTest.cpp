#include "clipboard/PasteboardReading.h"
#include "tests/clipboard/ClipboardFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* storePath = "/Users/rb/Library/Application Support/Rook Bay/Clipboard.archive";

class ClipboardStoreTest : public ClipboardHistoryTest {
protected:
    std::vector<ArchiveObject>& stored() { return desktop_.archives().files()[storePath]; }
    std::string newestText() { return history_->items().at(0)->text().value_or("no text"); }
};

TEST_F(ClipboardStoreTest, EachCopyIsRecordedOnceAndRepeatsMoveToTheTop) {
    copyText("A");
    const double first = history_->items().at(0)->date;
    copyText("B");
    copyText("A");
    EXPECT_THAT(titles(), ElementsAre("A", "B"));
    EXPECT_EQ(history_->items()[0]->date, first + 1) << "dated at the last copy";
    copyText("A");
    EXPECT_THAT(titles(), ElementsAre("A", "B"));
    EXPECT_EQ(history_->items()[0]->date, first + 1.5);
    copy({.files = {"/a", "/b"}});
    copy({.files = {"/b", "/a"}});
    copy({.data = {{PasteboardType::Png, bytes("1x1")}}});
    copy({.data = {{PasteboardType::Tiff, bytes("1x1")}}});
    EXPECT_EQ(history_->items().size(), 5U) << "the order of files counts, a picture's type doesn't";
}

TEST_F(ClipboardStoreTest, LooksEveryHalfSecondAndReadsOnlyChanges) {
    ASSERT_EQ(desktop_.runLoop().pendingTimers().size(), 1U);
    EXPECT_EQ(desktop_.runLoop().pendingTimers()[0].interval, 0.5);
    EXPECT_EQ(desktop_.runLoop().pendingTimers()[0].tolerance, 0.2);
    desktop_.advance(60);
    EXPECT_EQ(desktop_.pasteboard().reads(), 0);
    desktop_.pasteboard().copyText("1");
    desktop_.pasteboard().copyText("2");
    desktop_.advance(0.49);
    EXPECT_THAT(titles(), ElementsAre("还没有复制记录"));
    desktop_.advance(0.01);
    EXPECT_THAT(titles(), ElementsAre("2"));
    desktop_.advance(60);
    EXPECT_EQ(desktop_.pasteboard().reads(), 1);
}

TEST_F(ClipboardStoreTest, WhatWasThereBeforeIsNotRecordedAndStopEndsIt) {
    history_->stop();
    EXPECT_THAT(desktop_.runLoop().pendingTimers(), IsEmpty());
    desktop_.pasteboard().copyText("before");
    history_->start();
    history_->start();
    EXPECT_EQ(desktop_.runLoop().pendingTimers().size(), 1U);
    desktop_.advance(1);
    EXPECT_THAT(history_->items(), IsEmpty());
    copyText("after");
    EXPECT_EQ(newestText(), "after");
}

TEST_F(ClipboardStoreTest, WhereTheSystemTellsOfChangesNoTimerRuns) {
    desktop_.pasteboard().setTellsChanges(true);
    start();
    EXPECT_THAT(desktop_.runLoop().pendingTimers(), IsEmpty());
    desktop_.pasteboard().copyText("at once");
    EXPECT_EQ(newestText(), "at once");
    history_->stop();
    desktop_.pasteboard().copyText("unseen");
    EXPECT_EQ(history_->items().size(), 1U);
}

TEST_F(ClipboardStoreTest, WhatChangesWhileItIsReadIsReadAnew) {
    desktop_.pasteboard().setTellsChanges(true);
    desktop_.pasteboard().setAnswerDelay(0.3);
    start();
    desktop_.pasteboard().copyText("ordinary");
    desktop_.advance(0.4); // its types are known
    // The text that would come now is the password manager's.
    desktop_.pasteboard().copy({.text = "secret", .marks = {PasteboardType::Concealed}});
    desktop_.advance(5);
    EXPECT_THAT(history_->items(), IsEmpty());
    desktop_.pasteboard().copyText("ordinary again");
    desktop_.advance(0.7);
    EXPECT_EQ(newestText(), "ordinary again");
    desktop_.pasteboard().copyText("dropped");
    desktop_.advance(0.4);
    menus::choose(menu(), "暂停记录");
    desktop_.advance(5);
    EXPECT_EQ(history_->items().size(), 1U) << "paused in the middle of reading";
}

TEST_F(ClipboardStoreTest, WhatOthersMarkAsPrivateIsNeverRecorded) {
    for (const std::string& type : PasteboardReading::privateTypes()) {
        const int reads = desktop_.pasteboard().reads();
        copy({.text = "secret", .marks = {"public.html", type}});
        EXPECT_THAT(history_->items(), IsEmpty()) << type;
        EXPECT_EQ(desktop_.pasteboard().reads(), reads) << "not even read";
    }
    EXPECT_GE(PasteboardReading::privateTypes().size(), 6U);
    copyText("ordinary");
    EXPECT_EQ(newestText(), "ordinary");
}

TEST_F(ClipboardStoreTest, TheFirstKindThatAppliesWins) {
    const Bytes png = bytes("20x10");
    copy({.text = "/tmp/a.txt", .data = {{PasteboardType::Png, png}}, .files = {"/tmp/a.txt", "", "/tmp/b.txt"}});
    EXPECT_EQ(history_->items().at(0)->kind(), RBClipItem::Files);
    EXPECT_THAT(*history_->items()[0]->paths(), ElementsAre("/tmp/a.txt", "/tmp/b.txt"));
    copy({.text = "fallback", .files = {""}});
    EXPECT_EQ(history_->items().size(), 1U) << "files never fall through to text";
    copy({.text = "  as it stands\n", .data = {{PasteboardType::Png, png}}});
    EXPECT_EQ(newestText(), "  as it stands\n");
    copy({.text = " \n\t\u3000\u2028", .data = {{PasteboardType::Tiff, bytes("1x1")}, {PasteboardType::Png, png}}});
    EXPECT_EQ(history_->items()[0]->imageType(), PasteboardType::Png);
    EXPECT_EQ(*history_->items()[0]->imageData()->bytes(), png);
    copy({.data = {{PasteboardType::Tiff, bytes("3x3")}, {PasteboardType::Png, {}}}});
    EXPECT_EQ(history_->items()[0]->imageType(), PasteboardType::Tiff) << "an empty picture is none";
    const std::size_t before = history_->items().size();
    copy({.text = " \n "});
    copy({.data = {{"public.html", bytes("<p>")}}});
    EXPECT_EQ(history_->items().size(), before);
}

TEST_F(ClipboardStoreTest, WhatIsTooLargeIsNotRecorded) {
    std::string longest;
    for (int i = 0; i < 100'000; ++i) {
        longest += "中a";
    }
    copyText(longest);
    EXPECT_EQ(history_->items().at(0)->textLength(), 200'000U);
    copyText(longest + "b");
    EXPECT_EQ(history_->items().size(), 1U);
    copyText(longest.substr(0, longest.size() - 4) + "😀"); // 200,000 units again
    EXPECT_EQ(history_->items().size(), 2U);
    copyText(longest.substr(0, longest.size() - 1) + "😀");
    EXPECT_EQ(history_->items().size(), 2U);

    Bytes picture(6'291'456, 7);
    copy({.text = longest + "b", .data = {{PasteboardType::Png, picture}}});
    EXPECT_EQ(history_->items().at(0)->kind(), RBClipItem::Picture);
    picture.push_back(7);
    copy({.data = {{PasteboardType::Png, picture}}});
    EXPECT_EQ(history_->items().size(), 3U);
    copy({.data = {{PasteboardType::Png, picture}, {PasteboardType::Tiff, bytes("2x2")}}});
    EXPECT_EQ(history_->items().at(0)->imageType(), PasteboardType::Tiff);
}

TEST_F(ClipboardStoreTest, TheThirtyFirstEntryPushesOutTheOldest) {
    for (int i = 1; i <= 31; ++i) {
        copyText(std::to_string(i));
    }
    EXPECT_EQ(history_->items().size(), 30U);
    EXPECT_EQ(newestText(), "31");
    EXPECT_EQ(history_->items().back()->text(), "2");
}

TEST_F(ClipboardStoreTest, ChangesWithinTheDelayAreOneWritingOfWhatHoldsThen) {
    copyText("A");
    desktop_.advance(0.5);
    copyText("B"); // half a second before the delay ends
    desktop_.advance(0.49);
    EXPECT_EQ(desktop_.archives().writes(), 0);
    desktop_.advance(0.01);
    EXPECT_EQ(desktop_.archives().writes(), 1);
    EXPECT_EQ(desktop_.archives().className(), "RBClipItem");
    ASSERT_EQ(stored().size(), 2U);
    EXPECT_EQ(std::get<std::string>(stored()[0].at("text")), "B");
    EXPECT_EQ(stored()[0].size(), 6U) << "all keys, also those without a value";
    EXPECT_TRUE(std::holds_alternative<std::monostate>(stored()[0].at("imageData")));
    desktop_.advance(60);
    EXPECT_EQ(desktop_.archives().writes(), 1);
}

TEST_F(ClipboardStoreTest, TheHistoryComesBackInItsOrder) {
    copyText("text");
    copy({.data = {{PasteboardType::Png, bytes("4x3")}}});
    copy({.files = {"/x/a", "/x/b"}});
    desktop_.advance(2);
    const double date = history_->items().at(0)->date;
    desktop_.advance(1000);
    start();
    ASSERT_EQ(history_->items().size(), 3U);
    EXPECT_THAT(*history_->items()[0]->paths(), ElementsAre("/x/a", "/x/b"));
    EXPECT_EQ(history_->items()[0]->date, date);
    EXPECT_EQ(*history_->items()[1]->imageData()->bytes(), bytes("4x3"));
    EXPECT_EQ(history_->items()[1]->imageType(), PasteboardType::Png);
    EXPECT_EQ(history_->items()[2]->text(), "text");
    desktop_.advance(10);
    EXPECT_EQ(desktop_.archives().writes(), 1) << "loading is no change";
}

TEST_F(ClipboardStoreTest, RecordsThatHoldNothingAreLeftOutOnLoading) {
    const auto image = std::make_shared<const Blob>(std::make_shared<const Bytes>(bytes("1x1")));
    stored() = {
        {{"kind", std::int64_t{1}}, {"imageData", image}},                                // no type
        {{"kind", std::int64_t{1}}, {"imageType", std::string(PasteboardType::Png)}},     // no data
        {{"kind", std::int64_t{0}}, {"text", std::string()}},                             // empty
        {{"kind", std::int64_t{2}}, {"paths", std::vector<std::string>()}},               // empty
        {{"kind", std::int64_t{3}}, {"text", std::string("x")}, {"date", ArchiveDate{}}}, // from the future
        {},
        {{"kind", std::int64_t{0}}, {"text", std::string("good")}},
    };
    for (int i = 0; i < 40; ++i) {
        stored().push_back({{"text", "more " + std::to_string(i)}}); // a missing kind is text
    }
    start();
    ASSERT_EQ(history_->items().size(), 30U);
    EXPECT_EQ(newestText(), "good");
    EXPECT_EQ(history_->items()[0]->date, desktop_.runLoop().wallClock()) << "without a date, now";
    EXPECT_EQ(history_->items()[29]->text(), "more 28");
}

TEST_F(ClipboardStoreTest, AFullDiskCostsNothingButTheWriting) {
    copyText("kept");
    desktop_.archives().setBroken(true);
    desktop_.advance(2);
    copyText("kept too");
    desktop_.advance(2);
    EXPECT_THAT(titles(), ElementsAre("kept too", "kept"));
    desktop_.archives().setBroken(false);
    copyText("third");
    desktop_.advance(2);
    EXPECT_EQ(stored().size(), 3U) << "the next change writes everything";
}

TEST_F(ClipboardStoreTest, PauseOutlivesTheProgramAndWhatWasCopiedMeanwhileIsNeverRecorded) {
    menus::choose(menu(), "暂停记录");
    EXPECT_EQ(desktop_.userDefaults().boolForKey("ClipboardPaused"), true);
    EXPECT_EQ(notice(), expected("剪贴板记录已暂停", "pause.circle.fill", SystemColor::Blue));
    copyText("while paused");
    start();
    EXPECT_TRUE(history_->paused());
    copyText("still paused");
    desktop_.pasteboard().copyText("just before");
    menus::choose(menu(), "暂停记录");
    EXPECT_EQ(notice(), expected("剪贴板记录已恢复", "play.circle.fill", SystemColor::Blue));
    desktop_.advance(5);
    EXPECT_THAT(history_->items(), IsEmpty());
    copyText("recorded");
    EXPECT_EQ(newestText(), "recorded");
}

} // namespace

} // namespace rb
