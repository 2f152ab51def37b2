#include "desktops/linux/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Action = CommandLine::Action;

TEST(CommandLine, KnownArgumentsRunAndOthersAreRefusedByName) {
    EXPECT_EQ(readCommandLine({}).action, Action::Run);
    const CommandLine run = readCommandLine({"--connections"});
    EXPECT_EQ(run.action, Action::Run);
    EXPECT_THAT(run.arguments, ElementsAre("--connections"));
    for (const std::string argument : {"--conections", "-platform", "", "file.txt", "--connections=1"}) {
        const CommandLine refused = readCommandLine({"--connections", argument});
        EXPECT_EQ(refused.action, Action::Refuse) << argument;
        EXPECT_THAT(refused.text, HasSubstr("“" + argument + "”"));
        EXPECT_THAT(refused.text, HasSubstr("--help"));
    }
}

TEST(CommandLine, HelpNamesEveryArgument) {
    const CommandLine help = readCommandLine({"--help"});
    EXPECT_EQ(help.action, Action::Help);
    for (const char* argument : {"--connections", "--help", "--version"}) {
        EXPECT_THAT(help.text, HasSubstr(argument));
    }
    EXPECT_THAT(readCommandLine({"--version"}).text, HasSubstr(ROOKBAY_VERSION));
}

} // namespace

} // namespace rb
