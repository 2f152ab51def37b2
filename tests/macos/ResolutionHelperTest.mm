#include "helpers/macos/ResolutionHelper/Trial.h"
#include "tests/macos/MacTest.h"

#import <CoreGraphics/CoreGraphics.h>

#include <unistd.h>

using namespace rb::fake;

namespace {

class ResolutionHelperTest : public MacTest {
protected:
    void SetUp() override {
        ASSERT_EQ(pipe(input_), 0);
        answer("CGDisplayVendorNumber", 16);
        answer("CGDisplayModelNumber", 32);
        answer("CGDisplaySerialNumber", 48);
        answer("CGDisplayModeIsUsableForDesktopGUI", 1);
        answer("CGDisplayModeGetIODisplayModeID", 77);
        // The one mode of the list, as good as any object to the code under test.
        answer("CGDisplayCopyAllDisplayModes", @[ @"mode 77" ]);
    }
    void TearDown() override {
        close(input_[0]);
        endInput();
        MacTest::TearDown();
    }
    void say(const std::string& text) {
        ASSERT_EQ(write(input_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void endInput() {
        if (input_[1] >= 0) {
            close(std::exchange(input_[1], -1));
        }
    }
    std::string run(const std::string& identity = "1:16:32:48", const std::string& mode = "77") {
        testing::internal::CaptureStdout();
        code_ = rb::runTrial(identity, mode, input_[0]);
        return testing::internal::GetCapturedStdout();
    }
    // The options with which configurations were completed: 0 for the process alone, 2 for good.
    static std::vector<long> completions() {
        std::vector<long> options;
        for (const Call& call : calls("CGCompleteDisplayConfiguration")) {
            options.push_back(call.integer(1));
        }
        return options;
    }

    int code_ = -1;
    int input_[2] = {-1, -1};
};

constexpr const char* begun = "{\"ok\":true,\"trial\":true}\n";

TEST_F(ResolutionHelperTest, KeepsOnlyAfterTheWord) {
    say("no\nkee");
    say("p\n");
    const std::string output = run();
    EXPECT_TRUE(output.starts_with(begun)) << output;
    EXPECT_NE(output.find("\"kept\":true"), std::string::npos) << output;
    EXPECT_EQ(completions(), (std::vector<long>{kCGConfigureForAppOnly, kCGConfigurePermanently}));
    EXPECT_EQ(code_, 0);
}

TEST_F(ResolutionHelperTest, RestoresAtTheEndOfTheInput) {
    say("keeper\n keep\nkeep"); // never that line
    endInput();
    const std::string output = run();
    EXPECT_NE(output.find("\"kept\":false"), std::string::npos) << output;
    EXPECT_EQ(completions(), (std::vector<long>{kCGConfigureForAppOnly, kCGConfigureForAppOnly}));
    EXPECT_EQ(code_, 0);
}

TEST_F(ResolutionHelperTest, ARefusalOfKeepingRestores) {
    say("keep\n");
    onCall("CGCompleteDisplayConfiguration",
           [](Call& call) { call.answer(call.integer(1) == kCGConfigurePermanently ? 1000 : 0); });
    const std::string output = run();
    EXPECT_NE(output.find("\"ok\":true,\"kept\":false"), std::string::npos) << output;
    EXPECT_EQ(completions(),
              (std::vector<long>{kCGConfigureForAppOnly, kCGConfigurePermanently, kCGConfigureForAppOnly}));
}

TEST_F(ResolutionHelperTest, NothingIsSetOnAnotherDisplayOrToAnotherMode) {
    for (const auto& [identity, mode] : std::vector<std::pair<std::string, std::string>>{{"1:16:32:49", "77"},
                                                                                         {"", "77"},
                                                                                         {"1:16:32", "77"},
                                                                                         {"1:16:32:48", "78"},
                                                                                         {"1:16:32:48", "77x"},
                                                                                         {"1:16:32:48", ""}}) {
        const std::string output = run(identity, mode);
        EXPECT_TRUE(output.starts_with("{\"ok\":false,\"trial\":false,\"message\":")) << output;
        EXPECT_EQ(code_, 1);
    }
    EXPECT_FALSE(called("CGBeginDisplayConfiguration"));
    onCall("CGConfigureDisplayWithDisplayMode", [](Call& call) { call.answer(1001); });
    EXPECT_TRUE(run().starts_with("{\"ok\":false")) << "and a configuration that is begun is taken back";
    EXPECT_TRUE(calledInOrder({"CGBeginDisplayConfiguration", "CGCancelDisplayConfiguration"}));
    EXPECT_FALSE(called("CGCompleteDisplayConfiguration"));
}

} // namespace
