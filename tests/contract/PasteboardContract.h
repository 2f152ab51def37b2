#pragma once

#include "platform/Pasteboards.h"
#include "tests/contract/DesktopUnderTest.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace rb {

// The pasteboard as one program has it for itself: what it writes, it can read again.
class PasteboardContract : public ContractTest {
protected:
    Pasteboard& board() { return desktop().pasteboards.general(); }

    // Answers may come at once or later; false in `second` when none came.
    template <typename Value, typename Ask>
    std::pair<Value, bool> answerOf(Ask ask) {
        std::pair<Value, bool> answer{};
        const Handle handle = ask([&](Value value) { answer = {std::move(value), true}; });
        user().until([&] { return answer.second; });
        EXPECT_TRUE(answer.second) << "no answer";
        return answer;
    }
    std::optional<std::string> text(std::size_t mostBytes = 1000) {
        return answerOf<std::optional<std::string>>([&](auto got) { return board().readString(mostBytes, got); }).first;
    }
    std::vector<std::string> files() {
        return answerOf<std::vector<std::string>>([&](auto got) { return board().readFiles(got); }).first;
    }
    SharedBytes data(const std::string& type, std::size_t mostBytes = 10'000'000) {
        return answerOf<SharedBytes>([&](auto got) { return board().readData(type, mostBytes, got); }).first;
    }
    std::vector<std::string> offered(const std::vector<std::string>& asked) {
        return answerOf<std::vector<std::string>>([&](auto got) { return board().offeredTypes(asked, got); }).first;
    }
    static bool has(const std::vector<std::string>& types, const char* type) {
        return std::find(types.begin(), types.end(), type) != types.end();
    }
    static SharedBytes noise(std::size_t size) {
        Bytes bytes(size);
        std::uint32_t state = 1;
        for (std::uint8_t& byte : bytes) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<std::uint8_t>(state >> 24U);
        }
        return std::make_shared<const Bytes>(std::move(bytes));
    }
};

TEST_P(PasteboardContract, EachWritingCountsAndReplacesWhatWasThere) {
    const std::int64_t before = board().changeCount();
    ASSERT_TRUE(board().write("first"));
    const std::int64_t first = board().changeCount();
    EXPECT_GT(first, before) << "at once, so that nobody takes it for another program's";
    EXPECT_EQ(text(), "first");
    ASSERT_TRUE(board().write(PasteboardData{PasteboardType::Png, noise(100)}));
    EXPECT_GT(board().changeCount(), first);
    EXPECT_EQ(text(), std::nullopt);
    EXPECT_TRUE(data(PasteboardType::Png));
    const std::int64_t second = board().changeCount();
    user().live(0.1);
    EXPECT_EQ(board().changeCount(), second) << "counted once";
}

TEST_P(PasteboardContract, TextsComeBackAsTheyWere) {
    for (const std::string& written : {std::string("plain"), std::string("文字 😀\r\n\ttab\u202E"), std::string(" ")}) {
        ASSERT_TRUE(board().write(written));
        EXPECT_EQ(text(), written);
    }
    ASSERT_TRUE(board().write(std::string(500'000, 'x')));
    EXPECT_EQ(text(499'999), std::nullopt) << "never more than was asked for";
    EXPECT_EQ(text(500'000).value_or("").size(), 500'000U);
    EXPECT_EQ(data(PasteboardType::Png), nullptr);
    EXPECT_TRUE(files().empty());
}

TEST_P(PasteboardContract, DataComesBackByteForByte) {
    for (const char* type : {PasteboardType::Png, PasteboardType::Tiff}) {
        const SharedBytes written = noise(2'000'000);
        ASSERT_TRUE(board().write(PasteboardData{type, written}));
        EXPECT_TRUE(has(offered({type}), type));
        const SharedBytes read = data(type);
        ASSERT_TRUE(read) << type;
        EXPECT_TRUE(*read == *written) << type;
        EXPECT_EQ(data(type, 1'999'999), nullptr);
    }
}

TEST_P(PasteboardContract, FilesComeBackInTheirOrder) {
    const std::vector<std::string> paths{"/tmp/b c.txt", "/tmp/中文 %20#?.txt", "/tmp/a"};
    ASSERT_TRUE(board().write(PasteboardFiles{paths}));
    EXPECT_EQ(files(), paths);
    EXPECT_TRUE(has(offered({PasteboardType::FileUrl}), PasteboardType::FileUrl));
    ASSERT_TRUE(board().write(PasteboardPictureFile{"/tmp/picture.png", PromisedBytes::settled(noise(10))}));
    EXPECT_EQ(files(), std::vector<std::string>{"/tmp/picture.png"});
    EXPECT_TRUE(data(PasteboardType::Png));
}

TEST_P(PasteboardContract, APromisedPictureIsWaitedForAndItsFileIsNot) {
    RunLoop& loop = desktop().runLoop;
    const SharedBytes png = noise(2'000'000);
    for (const SharedBytes& made : {png, SharedBytes()}) {
        const auto promise = PromisedBytes::begin(loop, [made](const std::atomic<bool>&) { return made; });
        ASSERT_TRUE(board().write(PasteboardPictureFile{"/tmp/picture.jpg", promise}));
        SharedBytes pasted = noise(1);
        bool answered = false;
        const Handle reading = board().readData(PasteboardType::Png, 10'000'000, [&](const SharedBytes& bytes) {
            pasted = bytes;
            answered = true;
        });
        EXPECT_EQ(files(), std::vector<std::string>{"/tmp/picture.jpg"});
        EXPECT_TRUE(user().until([&] { return answered; }));
        ASSERT_EQ(pasted != nullptr, made != nullptr) << "refused when it can't be made";
        EXPECT_TRUE(!made || *pasted == *made);
    }
}

TEST_P(PasteboardContract, APromiseThatIsReplacedIsGivenUp) {
    auto promise = PromisedBytes::begin(desktop().runLoop, [](const std::atomic<bool>&) { return noise(10); });
    const std::weak_ptr<PromisedBytes> held = promise;
    ASSERT_TRUE(board().write(PasteboardPictureFile{"/tmp/picture.jpg", std::move(promise)}));
    EXPECT_FALSE(held.expired());
    ASSERT_TRUE(board().write("text"));
    EXPECT_TRUE(held.expired());
    user().live(0.1);
    EXPECT_EQ(data(PasteboardType::Png), nullptr);
    EXPECT_EQ(text(), "text");
}

TEST_P(PasteboardContract, OnlyWhatIsAskedForAndThereIsNamed) {
    ASSERT_TRUE(board().write("text"));
    const std::vector<std::string> asked{PasteboardType::Concealed, PasteboardType::String, PasteboardType::Png,
                                         "com.agilebits.onepassword"};
    EXPECT_EQ(offered(asked), std::vector<std::string>{PasteboardType::String});
    EXPECT_EQ(offered({PasteboardType::Png}), std::vector<std::string>{});
}

TEST_P(PasteboardContract, ADroppedHandleEndsTheReading) {
    ASSERT_TRUE(board().write(PasteboardData{PasteboardType::Png, noise(3'000'000)}));
    int answers = 0;
    Handle reading = board().readData(PasteboardType::Png, 10'000'000, [&](const SharedBytes&) { ++answers; });
    const int atOnce = answers;
    reading.reset();
    user().live(0.3);
    EXPECT_EQ(answers, atOnce);
    EXPECT_TRUE(data(PasteboardType::Png)) << "the next reading isn't disturbed";
}

TEST_P(PasteboardContract, ChangesAreToldWhereTheyAreToldAtAll) {
    int told = 0;
    std::int64_t seen = 0;
    Handle watching = board().onChange([&] {
        ++told;
        seen = board().changeCount();
    });
    ASSERT_TRUE(board().write("text"));
    if (!watching) {
        return; // the product asks from time to time
    }
    EXPECT_TRUE(user().until([&] { return told > 0; }));
    EXPECT_EQ(seen, board().changeCount()) << "after the count has changed";
    watching.reset();
    told = 0;
    ASSERT_TRUE(board().write("another"));
    user().live(0.1);
    EXPECT_EQ(told, 0);
}

} // namespace rb
