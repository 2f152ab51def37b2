#include "desktops/linux/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Action = CommandLine::Action;

CommandLine read(const std::vector<std::string>& arguments) {
    return readCommandLine(arguments, "/home/lin");
}

TEST(CommandLine, KnownArgumentsRunAndOthersAreRefusedByName) {
    EXPECT_EQ(read({}).action, Action::Run);
    const CommandLine run = read({"--connections"});
    EXPECT_EQ(run.action, Action::Run);
    EXPECT_THAT(run.arguments, ElementsAre("--connections"));
    for (const std::string argument : {"--conections", "-platform", "", "file.txt", "--connections=1"}) {
        const CommandLine refused = read({"--connections", argument});
        EXPECT_EQ(refused.action, Action::Refuse) << argument;
        EXPECT_THAT(refused.text, HasSubstr("“" + argument + "”"));
        EXPECT_THAT(refused.text, HasSubstr("--help"));
    }
}

TEST(CommandLine, HelpNamesEveryArgument) {
    const CommandLine help = read({"--help"});
    EXPECT_EQ(help.action, Action::Help);
    for (const char* argument : {"--connections", "--help", "--version"}) {
        EXPECT_THAT(help.text, HasSubstr(argument));
    }
    EXPECT_THAT(read({"--version"}).text, HasSubstr(ROOKBAY_VERSION));
}

TEST(CommandLine, FilesToHangBecomeAbsolute) {
    const CommandLine line = read({"hang", "图 1.png", "/tmp/a.txt", "--help"});
    EXPECT_EQ(line.action, Action::Run);
    EXPECT_THAT(line.arguments, ElementsAre("hang", "/home/lin/图 1.png", "/tmp/a.txt", "/home/lin/--help"));
    EXPECT_EQ(read({"hang"}).action, Action::Refuse);
}

TEST(CommandLine, ANewTextFileMayNameItsFolder) {
    const auto arguments = [](const std::vector<std::string>& words) {
        const CommandLine line = readCommandLine(words, "/work");
        EXPECT_EQ(line.action, CommandLine::Action::Run);
        return line.arguments;
    };
    using Words = std::vector<std::string>;
    EXPECT_EQ(arguments({"new-text"}), Words{"new-text"});
    EXPECT_EQ(arguments({"new-text", ""}), Words{"new-text"});
    EXPECT_EQ(arguments({"new-text", "a b"}), (Words{"new-text", "/work/a b"}));
    EXPECT_EQ(arguments({"new-text", "/100%25"}), (Words{"new-text", "/100%25"})) << "a path is no address";
    EXPECT_EQ(arguments({"new-text", "file:///a%20b/%E6%96%87"}), (Words{"new-text", "/a b/文"}));
    EXPECT_EQ(arguments({"new-text", "file://localhost/a%2"}), (Words{"new-text", "/a%2"}));
    EXPECT_EQ(readCommandLine({"new-text", "a", "b"}, "/work").action, CommandLine::Action::Refuse);
}

} // namespace

} // namespace rb
