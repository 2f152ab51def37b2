#include "desktops/linux/ChildProcess.h"

#include "tests/linux/LinuxFixture.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>

namespace rb {

namespace {

using Words = std::vector<std::string>;

TEST(SplitCommand, SplitsAsAShellDoes) {
    EXPECT_EQ(splitCommand("i3lock -n  -c\t000000 "), (Words{"i3lock", "-n", "-c", "000000"}));
    EXPECT_EQ(splitCommand(R"(sh -c 'echo "a b"' "it's")"), (Words{"sh", "-c", R"(echo "a b")", "it's"}));
    EXPECT_EQ(splitCommand(R"(/my\ locker "a\"b\\c\n" 'd\')"), (Words{"/my locker", R"(a"b\c\n)", R"(d\)"}));
    EXPECT_EQ(splitCommand("a'b'\"c\"d '' \"\""), (Words{"abcd", "", ""}));
    EXPECT_EQ(splitCommand("~/x $HOME `id` ; & |"), (Words{"~/x", "$HOME", "`id`", ";", "&", "|"})) << "no shell";
    EXPECT_EQ(splitCommand(" \n"), Words{});
    EXPECT_EQ(splitCommand("a\\"), Words{"a\\"});
    EXPECT_FALSE(splitCommand("a 'b"));
    EXPECT_FALSE(splitCommand("a \"b'"));
}

class ChildProcessTest : public EventLoopFixture {
protected:
    std::optional<ChildExit> run(const Words& words) {
        std::optional<ChildExit> end;
        EXPECT_EQ(startProgram(words, [&](ChildExit result) { end = result; }), 0);
        EXPECT_TRUE(until([&] { return end.has_value(); }));
        return end;
    }
    TemporaryFolder folder_;
};

TEST_F(ChildProcessTest, TheEndIsToldAndNoZombieStays) {
    EXPECT_EQ(run({"true"})->text(), "exit code 0");
    EXPECT_EQ(run({"sh", "-c", "exit 3"})->text(), "exit code 3");
    EXPECT_EQ(run({"sh", "-c", "kill -9 $$"})->text(), "signal 9");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(startProgram({"/nonexistent/locker"}, [](ChildExit) { FAIL(); }), ENOENT);
    EXPECT_EQ(startProgram({folder_.path()}, [](ChildExit) { FAIL(); }), EACCES);
}

TEST_F(ChildProcessTest, TheChildStandsOnItsOwn) {
    const int leak = dup(STDOUT_FILENO); // without close-on-exec
    std::signal(SIGPIPE, SIG_IGN);
    const std::string report = folder_ / "report";
    run({"sh", "-c",
         "{ echo $(readlink /proc/$$/fd/0) $(ls /proc/self/fd | wc -l); "
         "[ $(ps -o sid= -p $$) -eq $$ ] && echo leads; "
         "echo $(( 0x$(sed -n 's/^SigIgn:[^0-9a-f]*//p' /proc/self/status) >> 12 & 1 )); } > '" +
             report + "'"});
    std::signal(SIGPIPE, SIG_DFL);
    close(leak);
    // Four descriptors: the standard ones and the folder that ls reads. The child leads a session and heeds SIGPIPE.
    EXPECT_EQ(readText(report), "/dev/null 4\nleads\n0\n");
}

} // namespace

} // namespace rb
