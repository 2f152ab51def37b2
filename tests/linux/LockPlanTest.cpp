#include "desktops/linux/LockPlan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> names(const LockSituation& situation) {
    std::vector<std::string> result;
    for (const LockAttempt& attempt : lockAttempts(situation)) {
        result.push_back(attempt.name());
    }
    return result;
}

std::set<std::string> everyProgram() {
    return {lockPrograms().begin(), lockPrograms().end()};
}

TEST(LockPlan, ABareWindowManagerTakesALockerFromThePath) {
    EXPECT_THAT(names({.programs = {"slock", "i3lock", "xscreensaver-command", "xdg-screensaver"}}),
                ElementsAre("i3lock", "slock"));
    EXPECT_THAT(names({}), IsEmpty());
}

TEST(LockPlan, TheSessionsScreenSaverComesFirst) {
    EXPECT_THAT(
        names({.busNames = {"org.freedesktop.ScreenSaver", "org.mate.ScreenSaver", "org.example.Other"},
               .programs = {"i3lock", "xdg-screensaver"},
               .desktop = true,
               .logind = true}),
        ElementsAre("org.mate.ScreenSaver", "org.freedesktop.ScreenSaver", "xdg-screensaver", "i3lock", "logind"));
    const auto cinnamon = lockAttempts({.busNames = {"org.cinnamon.ScreenSaver"}});
    ASSERT_EQ(cinnamon.size(), 1U);
    EXPECT_TRUE(cinnamon.front().takesMessage);
}

TEST(LockPlan, DaemonsThatRunAreAskedAndOthersAreNot) {
    EXPECT_THAT(names({.programs = everyProgram(), .running = {"xscreensaver"}}),
                ElementsAre("xscreensaver-command", "i3lock", "xsecurelock", "slock", "xlock", "dm-tool"));
    // Whoever set up xss-lock chose the locker and its looks there.
    EXPECT_EQ(names({.programs = {"i3lock"}, .running = {"xss-lock"}, .logind = true}).front(), "logind");
    EXPECT_EQ(names({.programs = {"i3lock"}, .running = {"xss-lock"}}).front(), "i3lock");
}

TEST(LockPlan, ProgramsForX11DoNotPretendToLockWayland) {
    EXPECT_THAT(names({.programs = {"i3lock", "xsecurelock", "slock", "xlock"}, .wayland = true}), IsEmpty());
    EXPECT_THAT(names({.programs = everyProgram(), .logind = true, .wayland = true}), ElementsAre("dm-tool", "logind"));
}

} // namespace

} // namespace rb
