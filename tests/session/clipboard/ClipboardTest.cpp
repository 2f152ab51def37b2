#include "tests/session/clipboard/ClipboardSession.h"
#include "tests/session/clipboard/CopyingProgram.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

// The history among terminal tools, and among badly behaved programs.
namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

TEST_F(ClipboardSessionTest, CopiesOfRealProgramsLandOnceEach) {
    xclip("before the start");
    startRookBay();
    xclip("first 文字");
    ASSERT_TRUE(waitForNewest("first 文字"));
    session().start({"sh", "-c", "printf 'by xsel' | xsel -b -i"});
    ASSERT_TRUE(waitForNewest("by xsel"));
    xclip("marked with the mouse only", "UTF8_STRING", "primary");
    xclip("first 文字");
    ASSERT_TRUE(waitForNewest("first 文字"));
    const std::string picture = largePicture();
    ASSERT_GT(picture.size(), 1'000'000U) << "so that it comes in pieces";
    xclip(picture, "image/png");
    ASSERT_TRUE(waitForNewest("kind 1"));
    const SharedBytes recorded = items().at(0).imageData()->bytes();
    EXPECT_EQ(std::string(recorded->begin(), recorded->end()), picture);
    xclip("file:///tmp/a%20b\r\nfile:///tmp/%E4%B8%AD\r\n", "text/uri-list");
    ASSERT_TRUE(waitForNewest("kind 2"));
    EXPECT_THAT(items().at(0).paths().value(), ElementsAre("/tmp/a b", "/tmp/中"));
    EXPECT_THAT(texts(), ElementsAre("kind 2", "kind 1", "first 文字", "by xsel"));
}

TEST_F(ClipboardSessionTest, ChoosingAnEntryPastesInOtherPrograms) {
    startRookBay();
    xclip("one");
    ASSERT_TRUE(waitForNewest("one"));
    const std::string picture = largePicture();
    xclip(picture, "image/png");
    ASSERT_TRUE(waitForNewest("kind 1"));
    const std::string path = file("a file.txt", "");
    xclip("file://" + session().folder() + "/a%20file.txt", "text/uri-list");
    ASSERT_TRUE(waitForNewest("kind 2"));
    xclip("marked", "UTF8_STRING", "primary");
    chooseEntry(XKB_KEY_3);
    EXPECT_EQ(paste(), "one");
    EXPECT_EQ(paste("text/plain;charset=utf-8"), "one");
    chooseEntry(XKB_KEY_3);
    EXPECT_EQ(paste("image/png"), picture) << "given in pieces";
    chooseEntry(XKB_KEY_3);
    EXPECT_EQ(paste("text/uri-list"), "file://" + session().folder() + "/a%20file.txt\r\n");
    EXPECT_EQ(paste("x-special/gnome-copied-files"), "copy\nfile://" + session().folder() + "/a%20file.txt");
    EXPECT_TRUE(waitForNewest("kind 2"));
    EXPECT_EQ(items().size(), 3U) << "its own writing isn't recorded again";
    Program& primary = session().start({"xclip", "-selection", "primary", "-o"});
    EXPECT_TRUE(primary.waitForExit());
    EXPECT_EQ(primary.output(), "marked");
}

TEST_F(ClipboardSessionTest, APasswordManagersHintIsHonoured) {
    startRookBay();
    constexpr const char* hint = "x-kde-passwordManagerHint";
    // The usual value, others, one that is no text, and one that is too long to be read.
    for (const std::string& value : {std::string("secret"), std::string("public"), std::string("0"), std::string(" "),
                                     std::string(1, '\0'), std::string("\xFF\xFE"), std::string(5000, 's')}) {
        SCOPED_TRACE(value.substr(0, 10));
        const CopyingProgram manager(session().display(), {.offered = {{"UTF8_STRING", "p4ssw0rd"}, {hint, value}}});
        ASSERT_TRUE(waitUntil([&] { return manager.asked(hint) > 0; }));
        EXPECT_TRUE(staysTrue([&] { return manager.asked("UTF8_STRING") == 0; }, 0.5)) << "never even read";
    }
    {
        const CopyingProgram manager(session().display(),
                                     {.offered = {{"UTF8_STRING", "p4ssw0rd"}, {hint, ""}}, .answersContents = false});
        ASSERT_TRUE(waitUntil([&] { return manager.asked(hint) > 0; }));
        constexpr double whileItMayAnswer = 4;
        EXPECT_TRUE(staysTrue([&] { return manager.asked("UTF8_STRING") == 0; }, whileItMayAnswer + 0.5));
    }
    {
        const CopyingProgram manager(
            session().display(), {.offered = {{"UTF8_STRING", "p4ssw0rd"}, {"org.nspasteboard.ConcealedType", ""}}});
        ASSERT_TRUE(waitUntil([&] { return manager.asked("TARGETS") > 0; }));
        EXPECT_TRUE(staysTrue([&] { return manager.asked("UTF8_STRING") == 0; }, 0.5));
    }
    // An empty hint says nothing.
    const CopyingProgram ordinary(session().display(), {.offered = {{"UTF8_STRING", "ordinary"}, {hint, ""}}});
    EXPECT_TRUE(waitForNewest("ordinary"));
    EXPECT_EQ(ordinary.asked(hint), 1);
    EXPECT_EQ(items().size(), 1U);
}

// A program that pastes, step by step as a test wants it. It takes every answer in one and the same place.
class PastingProgram {
public:
    explicit PastingProgram(const std::string& display)
        : x_(display)
        , window_(xcb_generate_id(x_.connection()))
        , clipboard_(x_.atom("CLIPBOARD"))
        , place_(x_.atom("PASTED")) {
        xcb_create_window(x_.connection(), XCB_COPY_FROM_PARENT, window_, x_.root(), -10, -10, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    }

    // True once the answer lies there, or its announcement when it comes in pieces.
    [[nodiscard]] bool ask(const std::string& target) const {
        request(target);
        return isAnswered();
    }
    // The same, and what lay there before is taken away right after the question.
    [[nodiscard]] bool askAndTakeAway(const std::string& target) const {
        request(target);
        xcb_delete_property(x_.connection(), window_, place_);
        return isAnswered();
    }
    // Takes away what lies there, or comes within that many seconds.
    std::optional<std::string> take(double limit = 5) const {
        std::optional<std::string> taken;
        (void)waitUntil(
            [&] {
                constexpr std::uint32_t most = 1'000'000; // four bytes each
                const auto cookie = xcb_get_property(x_.connection(), 1, window_, place_, XCB_ATOM_ANY, 0, most);
                const auto reply = ownReply(xcb_get_property_reply(x_.connection(), cookie, nullptr));
                if (reply && reply->type != XCB_ATOM_NONE) {
                    taken.emplace(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                  static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
                }
                return taken.has_value();
            },
            limit);
        return taken;
    }
    // All of an answer that is announced.
    std::string takePieces() const {
        std::string all;
        std::optional<std::string> piece = take();
        while (piece && !piece->empty()) {
            all += *piece;
            piece = take();
        }
        return all;
    }

private:
    void request(const std::string& target) const {
        const xcb_atom_t atom = x_.atom(target);
        xcb_convert_selection(x_.connection(), window_, clipboard_, atom, place_, XCB_CURRENT_TIME);
    }
    bool isAnswered() const {
        xcb_flush(x_.connection());
        return waitUntil([this] {
            const auto event = ownReply(xcb_poll_for_event(x_.connection()));
            return event && (event->response_type & 0x7F) == XCB_SELECTION_NOTIFY &&
                   reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property == place_;
        });
    }

    XClient x_;
    xcb_window_t window_;
    xcb_atom_t clipboard_;
    xcb_atom_t place_;
};

TEST_F(ClipboardSessionTest, WhoGivesUpAPasteAndAsksAnewGetsTheNewAnswerAlone) {
    startRookBay();
    const std::string picture = largePicture();
    xclip(picture, "image/png");
    ASSERT_TRUE(waitForNewest("kind 1"));
    chooseEntry(XKB_KEY_1);
    const PastingProgram program(session().display());
    const auto giveUpInTheMiddle = [&] {
        ASSERT_TRUE(program.ask("image/png"));
        ASSERT_TRUE(program.take()) << "announced";
        const auto piece = program.take();
        ASSERT_TRUE(piece);
        ASSERT_LT(piece->size(), picture.size());
    };
    giveUpInTheMiddle();
    ASSERT_TRUE(program.ask("image/png"));
    ASSERT_TRUE(program.take()) << "announced";
    EXPECT_EQ(program.takePieces(), picture) << "from its beginning, each piece once";
    giveUpInTheMiddle();
    ASSERT_TRUE(program.ask("TARGETS"));
    ASSERT_TRUE(program.take());
    EXPECT_FALSE(program.take(0.5)) << "nothing of the picture comes after the list";
    // GTK asks for the contents before it has taken the list away.
    ASSERT_TRUE(program.ask("TARGETS"));
    ASSERT_TRUE(program.askAndTakeAway("image/png"));
    EXPECT_EQ(program.take().value_or("").size(), sizeof(std::uint32_t)) << "announced";
    EXPECT_EQ(program.takePieces(), picture);
    giveUpInTheMiddle();
    xclip("short");
    ASSERT_TRUE(waitForNewest("short"));
    chooseEntry(XKB_KEY_1);
    ASSERT_TRUE(program.ask("UTF8_STRING"));
    EXPECT_EQ(program.take(), "short");
    EXPECT_FALSE(program.take(0.5)) << "nothing of the picture comes after the text";
}

TEST_F(ClipboardSessionTest, BadOwnersCostOnlyTheirOwnCopies) {
    Program& rookBay = startRookBay();
    const auto usable = [&] {
        const double start = monotonicNow();
        EXPECT_NE(openMenu(), 0U);
        EXPECT_LT(monotonicNow() - start, 1.5) << "an owner never blocks the interface";
        x().tapKey(XKB_KEY_Escape);
        EXPECT_TRUE(waitUntil([&] { return x().viewableOfClass(menuClass).empty(); }));
    };
    const std::string display = session().display();
    {
        const CopyingProgram silent(display, {.offered = {{"UTF8_STRING", "x"}}, .answersTargets = false});
        ASSERT_TRUE(waitUntil([&] { return silent.asked("TARGETS") > 0; }));
        usable();
    }
    {
        const CopyingProgram silent(display, {.offered = {{"UTF8_STRING", "x"}}, .answersContents = false});
        ASSERT_TRUE(waitUntil([&] { return silent.asked("UTF8_STRING") > 0; }));
        usable();
    }
    {
        // Falls silent in the middle, then dies.
        const CopyingProgram dying(
            display, {.offered = {{"image/png", std::string(300'000, 'x')}}, .pieceSize = 10'000, .mostPieces = 5});
        ASSERT_TRUE(waitUntil([&] { return dying.asked("image/png") > 0; }));
        usable();
    }
    {
        // Says little and sends without an end.
        const CopyingProgram lying(
            display,
            {.offered = {{"image/png", std::string(9'000'000, 'x')}}, .pieceSize = 65'536, .promisedSize = 10});
        ASSERT_TRUE(waitUntil([&] { return lying.asked("image/png") > 0; }));
        usable();
    }
    {
        // Says too much.
        const CopyingProgram boasting(
            display, {.offered = {{"image/png", "x"}}, .pieceSize = 1, .promisedSize = 4'000'000'000U});
        ASSERT_TRUE(waitUntil([&] { return boasting.asked("image/png") > 0; }));
        usable();
    }
    CopyingProgram many(display, {.offered = {{"UTF8_STRING", "among many"}}, .furtherTargets = 5'000});
    ASSERT_TRUE(waitForNewest("among many"));
    for (int i = 0; i < 50; ++i) {
        many.copyAgain(); // changes during the transfers
    }
    usable();
    xclip("at last");
    EXPECT_TRUE(waitForNewest("at last"));
    EXPECT_THAT(texts(), ElementsAre("at last", "among many"));
    EXPECT_TRUE(rookBay.isRunning());
}

TEST_F(ClipboardSessionTest, SlowPiecesAreStillPutTogether) {
    startRookBay();
    const std::string text(500'000 / 4, 'a');
    const CopyingProgram slow(session().display(), {.offered = {{"UTF8_STRING", text}}, .pieceSize = 1000});
    EXPECT_TRUE(waitForNewest(text));
}

// A small file system of its own, as long as this lives.
class SmallDisk {
public:
    explicit SmallDisk(std::string folder)
        : folder_(std::move(folder)) {
        fs::create_directories(folder_);
        mounted_ = mount("none", folder_.c_str(), "tmpfs", 0, size) == 0;
    }
    ~SmallDisk() {
        if (mounted_) {
            umount2(folder_.c_str(), MNT_DETACH);
        }
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    bool isMounted() const { return mounted_; }
    bool setReadOnly(bool readOnly) const {
        return mount("none", folder_.c_str(), "tmpfs", readOnly ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT, size) == 0;
    }

private:
    static constexpr const char* size = "size=600k";
    std::string folder_;
    bool mounted_ = false;
};

TEST_F(ClipboardSessionTest, AFullOrClosedDiskCostsNothingButTheWriting) {
    const SmallDisk disk(session().folder() + "/small");
    if (!disk.isMounted()) {
        GTEST_SKIP() << "mounting isn't allowed here";
    }
    session().environment["XDG_DATA_HOME"] = session().folder() + "/small";
    Program& rookBay = startRookBay();
    xclip("fits");
    ASSERT_TRUE(waitForNewest("fits"));
    const std::string picture = largePicture();
    xclip(picture, "image/png");
    ASSERT_TRUE(waitUntil([&] { return rookBay.output().find("cannot write") != std::string::npos; }));
    EXPECT_THAT(texts(), ElementsAre("fits")) << "the old archive stays whole";
    EXPECT_FALSE(fs::exists(archive() + ".new"));
    chooseEntry(XKB_KEY_1);
    EXPECT_EQ(paste("image/png"), picture) << "kept in memory";
    chooseEntry(XKB_KEY_1, {XKB_KEY_Alt_L}); // deletes it, and there is room again
    ASSERT_TRUE(disk.setReadOnly(true));
    xclip("while it is closed");
    EXPECT_TRUE(staysTrue([&] { return rookBay.isRunning() && texts().front() == "fits"; }, 2.5));
    ASSERT_TRUE(disk.setReadOnly(false));
    xclip("open again");
    ASSERT_TRUE(waitForNewest("open again"));
    EXPECT_THAT(texts(), ElementsAre("open again", "while it is closed", "fits"));
}

TEST_F(ClipboardSessionTest, AKillAtAnyMomentLeavesAWholeArchive) {
    int rounds = 12;
    if (const char* wanted = std::getenv("ROOKBAY_KILL_ROUNDS")) { // NOLINT(concurrency-mt-unsafe): one thread
        rounds = std::atoi(wanted);
    }
    std::string newest;
    for (int round = 0; round < rounds; ++round) {
        Program& rookBay = startRookBay();
        const std::size_t before = items().size();
        xclip("round " + std::to_string(round));
        // Within the 1.5 seconds, in the middle of the writing, or afterwards.
        (void)staysTrue([] { return true; }, 1.42 + 0.02 * (round % 12));
        rookBay.signal(SIGKILL);
        ASSERT_TRUE(rookBay.waitForExit());
        if (fs::exists(archive())) {
            Program& reader = session().start({"python3", READ_ARCHIVE, archive()});
            ASSERT_EQ(reader.waitForExit(), 0) << "round " << round << ": " << reader.output();
        }
        const auto found = texts();
        ASSERT_GE(found.size(), std::min<std::size_t>(before, 30)) << "round " << round;
        if (!found.empty() && found.front() != newest) {
            EXPECT_EQ(found.front(), "round " + std::to_string(round));
            newest = found.front();
        }
    }
    EXPECT_FALSE(newest.empty());
}

} // namespace

} // namespace rb
