#include "desktops/linux/DefaultsFormat.h"
#include "desktops/linux/Files.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/ScreenshotPreferences.h"
#include "desktops/linux/UserDefaults.h"
#include "desktops/virtual/Desktop.h"
#include "screenshots/Inbox.h"
#include "tests/linux/kill/KilledWrites.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

// The takeover of the screenshot settings is killed after every single change of a file that it makes, while it takes
// over and while it gives back; a later run gives everything back all the same.
namespace rb {

namespace {

namespace fs = std::filesystem;

enum class Step { Apply, Restore };

class TakeoverKillTest : public testing::Test {
protected:
    TakeoverKillTest() {
        // In memory where there is such a place: the kill spares what the system has already been told.
        const bool memory = access("/dev/shm", W_OK) == 0;
        std::string pattern = (memory ? "/dev/shm" : fs::temp_directory_path().string()) + "/takeover-kill-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        setenv("HOME", (folder_ + "/home").c_str(), 1);
        setenv("XDG_CONFIG_HOME", config().c_str(), 1);
        setenv("XDG_DATA_HOME", (folder_ + "/data").c_str(), 1);
        setenv("GSETTINGS_BACKEND", "memory", 1);
        setenv("PATH", (folder_ + "/bin").c_str(), 1);
        for (const char* name : {"flameshot", "xfce4-screenshooter", "spectacle"}) {
            write(folder_ + "/bin/" + name, "#!/bin/sh\n");
            fs::permissions(folder_ + "/bin/" + name, fs::perms::owner_all);
        }
    }
    ~TakeoverKillTest() override { fs::remove_all(folder_); }

    std::string config() const { return folder_ + "/config"; }
    std::string settings() const { return config() + "/rook-bay/screencapture.json"; }
    static void write(const std::string& path, const std::string& text) {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
        fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    }
    static std::optional<std::string> read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return file ? std::optional(std::string(std::istreambuf_iterator<char>(file), {})) : std::nullopt;
    }

    // What the user has before we come: one of many mixes of absent and present settings.
    void begin(unsigned mix) {
        fs::remove_all(config());
        fs::remove_all(folder_ + "/data");
        fs::remove_all(folder_ + "/dotfiles");
        if ((mix & 1) != 0) {
            write(config() + "/flameshot/flameshot.ini",
                  "[General]\nsavePath=/home/me/\xe5\x9b\xbe\nx=1\n\n[Shortcuts]\ny=2");
        }
        if ((mix & 2) != 0) {
            write(config() + "/xfce4/xfce4-screenshooter", "action=1\r\nscreenshot_dir=file:///home/me\r\nlast=\r\n");
        }
        if ((mix & 4) != 0) {
            write(folder_ + "/dotfiles/spectaclerc", "[Save]\n lastSaveLocation = a \n");
            fs::create_directories(config());
            fs::create_symlink(folder_ + "/dotfiles/spectaclerc", config() + "/spectaclerc");
        }
        if ((mix & 8) != 0) {
            write(config() + "/rook-bay/defaults.json", *writeDefaults({{"HotKeyCode", 37}}));
            write(settings(), *writeDefaults({{"location", "~/Shots"}, {"show-thumbnail", true}, {"other", 1.5}}));
        }
    }
    // Files of others to the byte; of ours what they say. What was saved of the user's values may stay behind unused.
    struct Picture {
        std::map<std::string, std::string> files;
        PropertyDictionary settings;
        bool operator==(const Picture&) const = default;
    };
    Picture look() {
        Picture picture;
        for (const std::string& place : {config(), folder_ + "/dotfiles"}) {
            for (const auto& entry :
                 fs::exists(place) ? fs::recursive_directory_iterator(place) : fs::recursive_directory_iterator()) {
                if (entry.is_regular_file() && entry.path().parent_path().filename() != "rook-bay") {
                    picture.files[entry.path()] =
                        (entry.is_symlink() ? "-> " : "") + read(entry.path()).value_or("unreadable");
                }
            }
        }
        picture.settings =
            parseDefaults(read(settings()).value_or("{}")).values.value_or(PropertyDictionary{{"broken", true}});
        if (!parseDefaults(read(config() + "/rook-bay/defaults.json").value_or("{}")).values) {
            picture.files["defaults"] = "broken";
        }
        if (fs::exists(config() + "/rook-bay/screenshot-programs.json")) {
            picture.files["journal"] = "left behind";
        }
        return picture;
    }

    static void perform(Step step) {
        VirtualDesktop desktop;
        {
            LinuxUserDefaults defaults(configFolder(), desktop.runLoop(), desktop.log());
            LinuxScreenshotPreferences preferences(defaults, desktop.log());
            const LinuxFiles files;
            RBInbox inbox(preferences, defaults, files);
            step == Step::Apply ? inbox.apply() : inbox.restore();
        }
    }
    // The step in a process of its own that is killed after a number of changes; false when it came to its end before.
    bool isKilledIn(Step step, int change, bool torn) {
        const pid_t child = fork();
        if (child == 0) {
            killAfterChange(change, torn);
            perform(step);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        kills_ += WIFSIGNALED(status) ? 1 : 0;
        EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == 0) << status;
        return WIFSIGNALED(status);
    }
    // The rest of one case: whoever comes next gives back.
    void expectGivenBack(const Picture& before, const std::string& what) {
        perform(Step::Restore);
        const Picture after = look();
        for (const auto& [path, text] : after.files) {
            EXPECT_TRUE(before.files.contains(path)) << "left behind: " << path;
        }
        ASSERT_TRUE(after == before) << what;
    }

    std::string folder_;
    int kills_ = 0;
};

TEST_F(TakeoverKillTest, OneKillAfterAnyChangeLosesNothing) {
    for (unsigned mix = 0; mix < 16; ++mix) {
        begin(mix);
        const Picture before = look();
        perform(Step::Apply);
        ASSERT_FALSE(look() == before);
        for (const bool torn : {false, true}) {
            for (const Step step : {Step::Apply, Step::Restore}) {
                for (int change = 1;; ++change) {
                    begin(mix);
                    if (step == Step::Restore) {
                        perform(Step::Apply);
                    }
                    const bool killed = isKilledIn(step, change, torn);
                    const std::string what =
                        std::to_string(mix) + (step == Step::Apply ? " apply " : " restore ") + std::to_string(change);
                    if (step == Step::Restore && !killed) {
                        ASSERT_TRUE(look() == before) << what;
                        break;
                    }
                    if (step == Step::Apply && change % 2 == 0) {
                        perform(Step::Apply); // the next start goes on with it
                    }
                    ASSERT_NO_FATAL_FAILURE(expectGivenBack(before, what));
                    if (!killed) {
                        break;
                    }
                }
            }
        }
    }
    EXPECT_GT(kills_, 1000);
}

TEST_F(TakeoverKillTest, NorDoTwo) {
    for (const unsigned mix : {15U}) {
        begin(mix);
        const Picture before = look();
        for (const auto& [first, second] :
             {std::pair(Step::Apply, Step::Restore), std::pair(Step::Apply, Step::Apply)}) {
            bool firstKilled = true;
            for (int one = 1; firstKilled; one += 2) {
                bool secondKilled = true;
                for (int two = 1; firstKilled && secondKilled; two += 2) {
                    begin(mix);
                    firstKilled = isKilledIn(first, one, false);
                    secondKilled = isKilledIn(second, two, false);
                    ASSERT_NO_FATAL_FAILURE(
                        expectGivenBack(before, std::to_string(one) + " then " + std::to_string(two)));
                }
            }
        }
    }
    EXPECT_GT(kills_, 1000);
}

TEST_F(TakeoverKillTest, NorDoesAFullDisk) {
    constexpr int mostWrites = 12;
    for (unsigned mix = 0; mix < 16; mix += 5) {
        begin(mix);
        const Picture before = look();
        for (const Step step : {Step::Apply, Step::Restore}) {
            for (int write = 1; write <= mostWrites; ++write) {
                begin(mix);
                if (step == Step::Restore) {
                    perform(Step::Apply);
                }
                const pid_t child = fork();
                if (child == 0) {
                    fillDiskBeforeWrite(write);
                    perform(step);
                    _exit(0);
                }
                int status = 0;
                waitpid(child, &status, 0);
                ASSERT_EQ(status, 0);
                ASSERT_NO_FATAL_FAILURE(
                    expectGivenBack(before, std::to_string(mix) + " full before " + std::to_string(write)));
            }
        }
    }
}

} // namespace

} // namespace rb
