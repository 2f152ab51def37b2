#include "helpers/capture/Destination.h"
#include "helpers/capture/Arguments.h"
#include "helpers/capture/FileName.h"
#include "tests/linux/LinuxFixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

// From the command line and the settings to the place where a capture goes.
namespace rb {

namespace {

namespace fs = std::filesystem;

TEST(CaptureArgumentsTest, ReadsWhatIsAsked) {
    EXPECT_EQ(readCaptureArguments({}).area, CaptureArea::Screen);
    const CaptureArguments read =
        readCaptureArguments({"--region", "--delay", "1.5", "--clipboard", "--output=a=b.png", "--region"});
    EXPECT_EQ(read.action, CaptureArguments::Action::Capture);
    EXPECT_EQ(read.area, CaptureArea::Region);
    EXPECT_EQ(read.delay, 1.5);
    EXPECT_TRUE(read.clipboard);
    EXPECT_EQ(read.output, "a=b.png");
    EXPECT_EQ(readCaptureArguments({"--output", "--region"}).output, "--region") << "a file may have any name";
    EXPECT_EQ(readCaptureArguments({"--window", "--help"}).action, CaptureArguments::Action::Help);
    EXPECT_EQ(readCaptureArguments({"--version"}).text, "rookbay-capture " ROOKBAY_VERSION "\n");
}

TEST(CaptureArgumentsTest, RefusesWhatItDoesNotUnderstand) {
    const std::vector<std::vector<std::string>> wrong = {
        {"--regoin"},
        {"picture.png"},
        {"--region=yes"},
        {"--delay"},
        {"--delay", ""},
        {"--delay", "-1"},
        {"--delay", "3600.1"},
        {"--delay", "nan"},
        {"--delay", "inf"},
        {"--delay", "5s"},
        {"--delay", " 5"},
        {"--delay", "1e3"},
        {"--output"},
        {"--output="},
        {""},
        {"--region", "--window"},
        {"--serve-clipboard", "--region"},
    };
    for (const auto& words : wrong) {
        const CaptureArguments read = readCaptureArguments(words);
        EXPECT_EQ(read.action, CaptureArguments::Action::Refuse) << words.back();
        EXPECT_FALSE(read.text.empty());
    }
}

TEST(CaptureSettingsTest, WhatIsSaidForScreenshotsGoesFirst) {
    const CaptureSettings standard = readCaptureSettings({});
    EXPECT_TRUE(standard.locations.empty());
    EXPECT_FALSE(standard.toClipboard);
    EXPECT_TRUE(standard.thumbnail);
    EXPECT_EQ(standard.type, "png");

    const CaptureSettings mixed = readCaptureSettings({{"location", "/all"},
                                                       {"location-screenshot", "/shots"},
                                                       {"target", "clipboard"},
                                                       {"target-screenshot", "file"},
                                                       {"show-thumbnail", 0},
                                                       {"type", "jpg"}});
    EXPECT_EQ(mixed.locations, (std::vector<std::string>{"/shots", "/all"}));
    EXPECT_FALSE(mixed.toClipboard);
    EXPECT_FALSE(mixed.thumbnail);
    EXPECT_EQ(mixed.type, "jpg");

    const CaptureSettings strange = readCaptureSettings({{"location", 5},
                                                         {"location-screenshot", ""},
                                                         {"target", PropertyArray{"clipboard"}},
                                                         {"show-thumbnail", "no"},
                                                         {"type", true}});
    EXPECT_TRUE(strange.locations.empty());
    EXPECT_FALSE(strange.toClipboard);
    EXPECT_TRUE(strange.thumbnail);
    EXPECT_EQ(strange.type, "png");
}

class CaptureDestinationTest : public testing::Test {
protected:
    CaptureDestinationTest() {
        for (const char* name : {"/home", "/home/Desktop", "/home/Pictures", "/config", "/config/rook-bay"}) {
            fs::create_directory(root_ + name);
        }
    }

    CaptureDestination to(const std::vector<std::string>& words, const PropertyDictionary& preferences = {}) {
        return captureDestination(readCaptureArguments(words), readCaptureSettings(preferences),
                                  {.home = root_ + "/home", .desktop = desktop(), .working = root_});
    }
    std::string desktop() const { return root_ + "/home/Desktop"; }
    TemporaryFolder temporary_;
    std::string root_ = temporary_.path();
};

TEST_F(CaptureDestinationTest, TheFirstLocationThatIsAFolderCounts) {
    EXPECT_EQ(to({}).folder, desktop());
    EXPECT_EQ(to({}).fallback, "") << "there is nothing behind the Desktop";
    EXPECT_EQ(to({}, {{"location", "~/Pictures/"}}).folder, root_ + "/home/Pictures");
    EXPECT_EQ(to({}, {{"location", "~/Pictures"}}).fallback, desktop());
    fs::create_symlink(root_ + "/nowhere", root_ + "/dangling");
    std::ofstream(root_ + "/file") << "x";
    for (const std::string& wrong : {root_ + "/dangling", root_ + "/file", std::string("Pictures"), root_ + "/none"}) {
        EXPECT_EQ(to({}, {{"location-screenshot", wrong}}).folder, desktop()) << wrong;
        EXPECT_EQ(to({}, {{"location-screenshot", wrong}, {"location", "~/Pictures"}}).folder,
                  root_ + "/home/Pictures");
    }
}

TEST_F(CaptureDestinationTest, TheCommandLineGoesBeforeTheSettings) {
    const PropertyDictionary clipboard{{"target", "clipboard"}, {"location", "~/Pictures"}};
    EXPECT_TRUE(to({}, clipboard).toClipboard);
    EXPECT_FALSE(to({}, clipboard).toFile);
    EXPECT_FALSE(to({"--output", "x"}, clipboard).toClipboard);
    EXPECT_TRUE(to({"--clipboard", "--output", "x"}).toFile) << "both were asked for";
    EXPECT_FALSE(to({"--clipboard"}).toFile);

    CaptureDestination named = to({"--output", "home/My.Shot.JPEG"}, {{"type", "tiff"}});
    EXPECT_EQ(named.folder, root_ + "/home");
    EXPECT_EQ(named.name, "My.Shot");
    EXPECT_EQ(named.extension, "JPEG");
    EXPECT_EQ(named.type, "jpg");
    EXPECT_EQ(named.fallback, "") << "nobody would look for it elsewhere";
    named = to({"--output", root_ + "/plain"}, {{"type", "tif"}});
    EXPECT_EQ(named.name + "." + named.extension, "plain.tiff");
    EXPECT_EQ(to({"--output", "home/"}, {{"type", "heic"}}).folder, root_ + "/home");
    EXPECT_EQ(to({"--output", "home"}, {{"type", "heic"}}).type, "png") << "which can't be written";
    EXPECT_EQ(to({"--output", "home"}).name, "") << "named after the time";
    for (const char* wrong : {"none/", "none/x.png", "x.doc", "home/Desktop/x.png/"}) {
        EXPECT_FALSE(to({"--output", wrong}).error.empty()) << wrong;
    }
}

TEST_F(CaptureDestinationTest, AFileOfSettingsThatIsNoneIsToldAndLeftAlone) {
    setenv("XDG_CONFIG_HOME", (root_ + "/config").c_str(), 1);
    std::vector<std::string> complaints;
    const auto load = [&] { return loadCaptureSettings([&](const std::string& text) { complaints.push_back(text); }); };
    EXPECT_EQ(load().type, "png");
    EXPECT_TRUE(complaints.empty()) << "no file is no mistake";
    const std::string file = root_ + "/config/rook-bay/screencapture.json";
    std::ofstream(file) << R"({"type": "jpg", "other": [1, 2]})";
    EXPECT_EQ(load().type, "jpg");
    EXPECT_TRUE(complaints.empty());
    std::ofstream(file) << R"({"type": "jpg")";
    EXPECT_EQ(load().type, "png");
    EXPECT_EQ(complaints.size(), 1U);
    EXPECT_TRUE(fs::exists(file));
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EQ(load().type, "png");
    EXPECT_EQ(complaints.size(), 2U);
}

TEST(CaptureNameTest, IsInTheUsersLanguage) {
    std::tm time{};
    time.tm_year = 126;
    time.tm_mon = 10;
    time.tm_mday = 3;
    time.tm_hour = 9;
    time.tm_min = 5;
    EXPECT_EQ(captureName(time, true), "截屏2026-11-03 09.05.00");
    EXPECT_EQ(captureName(time, false), "Screenshot 2026-11-03 at 09.05.00");
    EXPECT_EQ(numberedName("a", 1), "a");
    EXPECT_EQ(numberedName("a", 2), "a (2)");
    using Variables = std::map<std::string, std::string>;
    const auto chinese = [](Variables variables) {
        return speaksChinese([variables](const char* name) {
            const auto found = variables.find(name);
            return found == variables.end() ? std::string() : found->second;
        });
    };
    EXPECT_TRUE(chinese({{"LANG", "zh_CN.UTF-8"}}));
    EXPECT_FALSE(chinese({{"LANG", "zh_CN.UTF-8"}, {"LC_MESSAGES", "de_DE.UTF-8"}}));
    EXPECT_TRUE(chinese({{"LANG", "en_US.UTF-8"}, {"LC_ALL", "zh_TW.UTF-8"}}));
    EXPECT_TRUE(chinese({{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "zh_CN:en"}}));
    EXPECT_FALSE(chinese({{"LANG", "C.UTF-8"}, {"LANGUAGE", "zh_CN:en"}})) << "C knows no other language";
    EXPECT_FALSE(chinese({}));
}

} // namespace

} // namespace rb
