#include "desktops/linux/SessionLock.h"

#include "desktops/linux/RunLoop.h"
#include "platform/UserDefaults.h"
#include "tests/linux/LinuxFixture.h"

#include <QByteArray>
#include <gmock/gmock.h>

namespace rb {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CommandDefaults final : public UserDefaults {
public:
    std::optional<PropertyValue> objectForKey(const std::string&) const override {
        return command.empty() ? std::nullopt : std::optional<PropertyValue>(command);
    }
    void setObject(const std::string&, PropertyValue) override {}
    void removeObject(const std::string&) override {}
    void registerDefaults(const PropertyDictionary&) override {}
    std::string command;
};

// A session without a bus and with exactly the lockers that a test puts on the path.
class SessionLockTest : public EventLoopFixture {
protected:
    SessionLockTest() {
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qunsetenv("XDG_RUNTIME_DIR");
        qunsetenv("XDG_CURRENT_DESKTOP");
        qunsetenv("WAYLAND_DISPLAY");
        qputenv("PATH", QByteArray::fromStdString(bin_.path()));
    }
    ~SessionLockTest() override { qputenv("PATH", path_); }

    void locker(const std::string& name, const std::string& body) {
        writeProgram(bin_ / name, "echo \"" + name + " $*\" >> " + (bin_ / "calls") + "\n" + body);
    }
    std::string calls() const { return readText(bin_ / "calls"); }

    QByteArray path_ = qgetenv("PATH");
    TemporaryFolder bin_;
    RecordingLog log_;
    CommandDefaults defaults_;
    LinuxRunLoop loop_{log_};
    LinuxSessionLock lock_{defaults_, loop_, log_};
};

TEST_F(SessionLockTest, TheUsersOwnCommandComesFirstAndAlone) {
    locker("mylock", "exit 0");
    locker("i3lock", "exit 0");
    defaults_.command = "mylock 'two words'";
    lock_.startScreenSaver();
    EXPECT_TRUE(until([&] { return calls() == "mylock two words\n"; }));
    EXPECT_FALSE(until([&] { return calls().find("i3lock") != std::string::npos; }, 100));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(SessionLockTest, EachFailureIsToldAndTheNextIsTried) {
    locker("i3lock", "exit 1");
    locker("xsecurelock", "kill -SEGV $$");
    locker("slock", "exit 0");
    locker("xlock", "exit 0");
    defaults_.command = "/nonexistent/locker";
    lock_.startScreenSaver();
    EXPECT_TRUE(until([&] { return calls() == "i3lock -n -c 000000\nxsecurelock \nslock \n"; })) << calls();
    EXPECT_FALSE(until([&] { return calls().find("xlock") != std::string::npos; }, 100));
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("/nonexistent/locker"), HasSubstr("i3lock: exit code 1"),
                                          HasSubstr("xsecurelock: signal 11")));
}

TEST_F(SessionLockTest, ALockerThatSomebodyStopsIsNotReplaced) {
    locker("mylock", "kill -TERM $$");
    locker("i3lock", "exit 0");
    defaults_.command = "mylock";
    lock_.startScreenSaver();
    EXPECT_TRUE(until([&] { return !log_.lines().empty(); }));
    EXPECT_THAT(log_.lines(), ElementsAre("mylock ended with signal 15"));
    EXPECT_FALSE(until([&] { return calls().find("i3lock") != std::string::npos; }, 100));
}

TEST_F(SessionLockTest, NothingThatLocksIsToldWithTheRemedy) {
    defaults_.command = "mylock 'without end";
    lock_.startScreenSaver();
    EXPECT_THAT(log_.lines(), Contains(HasSubstr("quote")));
    EXPECT_THAT(log_.lines().back(), HasSubstr("LinuxLockCommand"));
}

TEST_F(SessionLockTest, ALockerThatStillRunsStandsForTheOnesThatFailBesideIt) {
    writeProgram(bin_ / "i3lock", "if mkdir " + (bin_ / "held") + " 2>/dev/null; then : > " + (bin_ / "up") +
                                      "; while [ -e " + (bin_ / "held") + " ]; do :; done; else exit 1; fi");
    qputenv("PATH", QByteArray::fromStdString(bin_.path()) + ":" + path_); // for mkdir
    locker("slock", "exit 0");
    lock_.startScreenSaver();
    ASSERT_TRUE(until([&] { return std::filesystem::exists(bin_ / "up"); }));
    lock_.startScreenSaver();
    EXPECT_TRUE(until([&] { return !log_.lines().empty(); }));
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("earlier locker")));
    EXPECT_EQ(calls(), "");
    std::filesystem::remove(bin_ / "held");
}

TEST_F(SessionLockTest, WithoutAnXServerDarkeningIsToldToHaveFailed) {
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":9999");
    lock_.sleepDisplays();
    qputenv("DISPLAY", display);
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("cannot darken")));
}

} // namespace

} // namespace rb
