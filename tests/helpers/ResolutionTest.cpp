#include "helpers/linux/resolution/ModeChange.h"
#include "helpers/linux/resolution/Record.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace rb {

namespace {

namespace fs = std::filesystem;

// Two displays side by side and one below the first.
RandrState desk() {
    return {.width = 3200,
            .height = 1800,
            .millimetreWidth = 320,
            .millimetreHeight = 180,
            .modes = {{1, 1920, 1080, 60}, {2, 1280, 720, 60}, {3, 2560, 1440, 60}},
            .crtcs = {{.id = 11, .x = 0, .y = 0, .width = 1920, .height = 1080, .mode = 1, .outputs = {21}},
                      {.id = 12, .x = 1920, .y = 0, .width = 1280, .height = 720, .mode = 2, .outputs = {22}},
                      {.id = 13, .x = 0, .y = 1080, .width = 1280, .height = 720, .mode = 2, .outputs = {23}},
                      {.id = 14}},
            .outputs = {{.id = 21, .crtc = 11, .modes = {1, 2, 3}},
                        {.id = 22, .crtc = 12, .modes = {2}},
                        {.id = 23, .crtc = 13, .modes = {2}},
                        {.id = 24, .modes = {1}}}};
}

TEST(ModeChangeTest, NeighboursMoveAlong) {
    const auto smaller = planChange(desk(), 21, 2);
    ASSERT_TRUE(smaller);
    EXPECT_EQ(smaller->crtc, 11U);
    ASSERT_EQ(smaller->after.crtcs.size(), 3U) << "what is off stays out of it";
    EXPECT_EQ(smaller->after.crtcs[0].mode, 2U);
    EXPECT_EQ(smaller->after.crtcs[1].x, 1280);
    EXPECT_EQ(smaller->after.crtcs[2].y, 720);
    EXPECT_EQ(smaller->after.width, 2560U);
    EXPECT_EQ(smaller->after.height, 1440U);
    EXPECT_EQ(smaller->after.millimetreWidth, 256U);
    EXPECT_EQ(smaller->before.width, 3200U);
    const auto larger = planChange(desk(), 21, 3);
    EXPECT_EQ(larger->after.crtcs[1].x, 2560);
    EXPECT_EQ(larger->after.width, 3840U);
    EXPECT_EQ(larger->after.height, 2160U);
}

TEST(ModeChangeTest, TurnedAndScaledOutputsStaySo) {
    RandrState state = desk();
    state.crtcs[0].rotation = XCB_RANDR_ROTATION_ROTATE_90;
    state.crtcs[0].width = 1080;
    state.crtcs[0].height = 1920;
    const auto turned = planChange(state, 21, 2);
    EXPECT_EQ(turned->after.crtcs[0].width, 720U);
    EXPECT_EQ(turned->after.crtcs[0].height, 1280U);
    state = desk();
    state.crtcs[0].width = 960; // two pixels a point
    state.crtcs[0].height = 540;
    EXPECT_EQ(planChange(state, 21, 2)->after.crtcs[0].width, 640U);
}

TEST(ModeChangeTest, OnlyModesOfADisplayThatIsOn) {
    EXPECT_FALSE(planChange(desk(), 22, 1));
    EXPECT_FALSE(planChange(desk(), 24, 1));
    EXPECT_FALSE(planChange(desk(), 99, 1));
    EXPECT_FALSE(planChange(desk(), 21, 99));
    EXPECT_FALSE(planChange({}, 0, 0));
}

TEST(ModeChangeTest, ARecordIsReadAsItWasWritten) {
    const Arrangement before = planChange(desk(), 21, 2)->before;
    EXPECT_EQ(readArrangement(writeArrangement(before)), before);
    for (const char* bad : {"", "[]", "{}", R"({"width":1,"height":1,"millimetreWidth":1,"millimetreHeight":1})",
                            R"({"width":99999,"height":1,"millimetreWidth":1,"millimetreHeight":1,"crtcs":[]})",
                            R"({"width":1,"height":1,"millimetreWidth":1,"millimetreHeight":1,"crtcs":[5]})",
                            R"({"width":1,"height":18446744073709551615,"millimetreWidth":1,"millimetreHeight":1,
                                "crtcs":[]})"}) {
        EXPECT_FALSE(readArrangement(bad)) << bad;
    }
}

// Folders of a user without a display.
class RecordTest : public testing::Test {
protected:
    RecordTest() {
        std::string name = (fs::temp_directory_path() / "rookbay-record-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        setVariable("HOME", folder_ + "/home");
        setVariable("XDG_RUNTIME_DIR", "");
        setVariable("XDG_STATE_HOME", "");
        setVariable("DISPLAY", "");
    }
    ~RecordTest() override {
        for (const auto& [name, value] : before_) {
            ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): single-threaded
        }
        fs::remove_all(folder_);
    }
    void setVariable(const char* name, const std::string& value) {
        const char* old = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
        before_.emplace(name, old ? old : "");
        ::setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    }
    std::string record() const { return recordText(writeArrangement(planChange(desk(), 21, 2)->before)); }
    std::string put(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ + "/" + name) << text;
        return folder_ + "/" + name;
    }

    std::string folder_;
    std::map<std::string, std::string> before_;
};

TEST_F(RecordTest, RecordsLieWhereNobodyElseLooks) {
    EXPECT_EQ(recordFolder(), folder_ + "/home/.local/state/rook-bay");
    EXPECT_EQ(fs::status(folder_ + "/home/.local/state/rook-bay").permissions(), fs::perms::owner_all);
    setVariable("XDG_STATE_HOME", folder_ + "/state");
    EXPECT_EQ(recordFolder(), folder_ + "/state/rook-bay");
    setVariable("XDG_RUNTIME_DIR", folder_ + "/nowhere");
    EXPECT_EQ(recordFolder(), folder_ + "/state/rook-bay") << "a runtime folder isn't ours to make";
    EXPECT_FALSE(fs::exists(folder_ + "/nowhere"));
    fs::create_directory(folder_ + "/run");
    setVariable("XDG_RUNTIME_DIR", folder_ + "/run");
    EXPECT_EQ(recordFolder(), folder_ + "/run/rook-bay");
    fs::permissions(folder_ + "/run/rook-bay", fs::perms::all);
    EXPECT_EQ(recordFolder(), folder_ + "/run/rook-bay");
    EXPECT_EQ(fs::status(folder_ + "/run/rook-bay").permissions(), fs::perms::owner_all);

    fs::remove(folder_ + "/run/rook-bay");
    fs::create_directory(folder_ + "/elsewhere");
    fs::create_directory_symlink(folder_ + "/elsewhere", folder_ + "/run/rook-bay");
    EXPECT_EQ(recordFolder(), folder_ + "/state/rook-bay") << "a link is not followed";
    fs::remove(folder_ + "/state/rook-bay");
    std::ofstream(folder_ + "/state/rook-bay") << "a file";
    EXPECT_FALSE(recordFolder());
}

TEST_F(RecordTest, ALinkIsNotFollowedAndNothingOverwritten) {
    const std::string target = put("precious", "mine");
    fs::create_symlink(target, folder_ + "/link");
    EXPECT_EQ(restoreRecord(folder_ + "/link", false), Restoring::Failed);
    EXPECT_FALSE(Record::create(folder_ + "/link", "{}"));
    EXPECT_FALSE(Record::create(target, "{}"));
    std::ifstream stream(target);
    std::string text;
    stream >> text;
    EXPECT_EQ(text, "mine");
}

TEST_F(RecordTest, WhatCannotBeAppliedStays) {
    const std::string path = put("resolution-1.json", record());
    EXPECT_EQ(restoreRecord(path, false), Restoring::Failed) << "there is no X server";
    EXPECT_TRUE(fs::exists(path));
    EXPECT_EQ(restoreRecords(folder_).failed, 1);
    EXPECT_EQ(restoreRecord(folder_ + "/none", false), Restoring::Nothing);
    // A record that broke off was never followed by a change, and another server's numbers mean nothing here.
    for (const std::string& text : {std::string(), record().substr(0, 40), std::string("[]")}) {
        const std::string broken = put("resolution-2.json", text);
        EXPECT_EQ(restoreRecord(broken, false), Restoring::Nothing);
        EXPECT_FALSE(fs::exists(broken));
    }
    setVariable("DISPLAY", ":12345");
    EXPECT_EQ(restoreRecord(path, false), Restoring::Nothing);
}

TEST_F(RecordTest, ARunningTrialIsLeftAlone) {
    const std::string path = newRecordPath(folder_);
    {
        const auto running = Record::create(path, record());
        ASSERT_TRUE(running);
        EXPECT_EQ(restoreRecord(path, false), Restoring::Running);
        EXPECT_EQ(restoreRecords(folder_).running, 1);
        forgetOldRecords(folder_);
        EXPECT_TRUE(fs::exists(path));
    }
    EXPECT_EQ(restoreRecords(folder_).failed, 1) << "its process is gone";
    forgetOldRecords(folder_);
    EXPECT_FALSE(fs::exists(path));
}

struct Ran {
    std::string output;
    int code = -1;
};
Ran run(const std::string& command) {
    Ran ran;
    FILE* pipe = ::popen((std::string(HELPERS_FOLDER "/") + command + " 2>&1").c_str(), "r"); // NOLINT(cert-env33-c)
    std::array<char, 4096> buffer{};
    while (const std::size_t length = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
        ran.output.append(buffer.data(), length);
    }
    ran.code = WEXITSTATUS(::pclose(pipe));
    return ran;
}

TEST(HelperProgramsTest, ExplainThemselvesAndRefuseNonsense) {
    for (const std::string name : {"ResolutionHelper", "CableHelper", "DisplayHelper"}) {
        EXPECT_THAT(run(name + " --help").output, testing::StartsWith("用法：" + name));
        EXPECT_EQ(run(name + " --help").code, 0);
        EXPECT_THAT(run(name + " --version").output, testing::StartsWith(name + " "));
        EXPECT_EQ(run(name + " --nonsense").code, 2);
        EXPECT_EQ(run(name + " trial").code, 2);
        EXPECT_EQ(run(name + " --version >/dev/full").code, 1) << "nobody could read it";
    }
    EXPECT_EQ(run("CableHelper --root /nonexistent").output, "{\"ports\":[]}\n");
    EXPECT_EQ(run("CableHelper >/dev/full").code, 1);
    for (const char* nonsense :
         {"CableHelper --root", "CableHelper --root /a /b", "CableHelper ''", "DisplayHelper", "DisplayHelper list 1",
          "DisplayHelper probe", "DisplayHelper on x", "ResolutionHelper", "ResolutionHelper trial 1:2:3:4",
          "ResolutionHelper trial 1:2:3:4 5 6", "ResolutionHelper restore 1"}) {
        EXPECT_EQ(run(nonsense).code, 2) << nonsense;
    }
    // Buses that no display hangs on, the first of which may well be there.
    for (const char* channel : {"nowhere", "i2c-0:DEL:41D9:0000004D", "i2c-99999999999:A", "'i2c-0/../x:A'", "''"}) {
        for (const std::string command : {"probe ", "sleep ", "wake "}) {
            const Ran ran = run("DisplayHelper " + command + channel);
            EXPECT_EQ(ran.code, 0);
            EXPECT_THAT(ran.output, testing::StartsWith("{\"ok\":false,\"message\":\"找不到这个控制通道")) << channel;
        }
    }
}

TEST(HelperProgramsTest, WithoutADisplayTheySaySo) {
    ::unsetenv("DISPLAY"); // NOLINT(concurrency-mt-unsafe): single-threaded
    EXPECT_THAT(run("ResolutionHelper trial 1:2:3:4 5 </dev/null").output, testing::HasSubstr("DISPLAY"));
    EXPECT_EQ(run("DisplayHelper list").output, "[]\n");
    for (const char* mode : {"12x", "-1", "99999999999", "''", "1.5"}) {
        const Ran ran = run(std::string("ResolutionHelper trial 1:2:3:4 ") + mode + " </dev/null");
        EXPECT_THAT(ran.output, testing::HasSubstr("模式编号无效")) << mode;
        EXPECT_EQ(ran.code, 1);
    }
}

} // namespace

} // namespace rb
