#include "desktops/linux/Workspace.h"

#include "tests/linux/LinuxFixture.h"

#include <QByteArray>

#include <map>
#include <optional>

namespace rb {

namespace {

namespace fs = std::filesystem;

// The session's own commands in a search path of the test's; each notes what it was given.
class WorkspaceTest : public EventLoopFixture {
protected:
    WorkspaceTest() {
        fs::create_directories(home_ / "bin");
        fs::create_directories(home_ / "data/applications");
        for (const auto& [name, value] :
             std::map<std::string, std::string>{{"PATH", home_ / "bin"}, {"XDG_DATA_HOME", home_ / "data"}}) {
            before_[name] = qgetenv(name.c_str());
            qputenv(name.c_str(), QByteArray::fromStdString(value));
        }
        for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"}) {
            before_[name] = qgetenv(name);
            qunsetenv(name); // no file manager to ask
        }
    }
    ~WorkspaceTest() override {
        for (const auto& [name, value] : before_) {
            value.isNull() ? qunsetenv(name.c_str()) : qputenv(name.c_str(), value);
        }
    }
    void provide(const std::string& program, const std::string& after = "") {
        writeProgram(home_ / ("bin/" + program),
                     "printf '" + program + "|%s' \"$*\" >'" + home_ / "noted" + "'; " + after);
    }
    std::string noted() const { return readText(home_ / "noted"); }
    // What it was told in the end; nothing when it wasn't told anything.
    std::optional<bool> wait(const std::function<void(Workspace::Done)>& act) {
        std::optional<bool> told;
        act([&](bool opened) {
            EXPECT_FALSE(told) << "only once";
            told = opened;
        });
        EXPECT_FALSE(told) << "in a later turn";
        EXPECT_TRUE(until([&] { return told.has_value(); }));
        return told;
    }

    TemporaryFolder home_;
    std::map<std::string, QByteArray> before_;
    RecordingLog log_;
    LinuxWorkspace workspace_{log_};
};

TEST_F(WorkspaceTest, FilesGoToTheUsersProgram) {
    const auto open = [this](Workspace::Done done) { workspace_.openFile("/a b.png", std::move(done)); };
    EXPECT_EQ(wait(open), false) << "there is no xdg-open";
    EXPECT_THAT(log_.lines(), testing::Contains(testing::HasSubstr("cannot start xdg-open")));
    provide("xdg-open", "exit 3");
    EXPECT_EQ(wait(open), false);
    provide("xdg-open");
    EXPECT_EQ(wait(open), true);
    EXPECT_EQ(noted(), "xdg-open|/a b.png");
    provide("xdg-open", "exec /bin/sleep 20");
    EXPECT_EQ(wait(open), true) << "one that stays with its program has taken the file";
    workspace_.openFile("/c", nullptr);
}

TEST_F(WorkspaceTest, TextsGoToTheProgramForPlainText) {
    const auto edit = [this](Workspace::Done done) { workspace_.openInTextEditor("/新.txt", std::move(done)); };
    provide("gio");
    EXPECT_EQ(wait(edit), false) << "nobody to ask";
    provide("xdg-mime");
    EXPECT_EQ(wait(edit), false) << "none is set";
    provide("xdg-mime", "echo note.desktop");
    EXPECT_EQ(wait(edit), false) << "it isn't installed any more";
    writeText(home_ / "data/applications/note.desktop", "[Desktop Entry]\n");
    EXPECT_EQ(wait(edit), true);
    EXPECT_EQ(noted(), "gio|launch " + home_ / "data/applications/note.desktop" + " /新.txt");
    provide("gio", "exit 1");
    EXPECT_EQ(wait(edit), false);
}

TEST_F(WorkspaceTest, WithoutAFileManagerOnTheBusTheFolderIsOpened) {
    provide("xdg-open");
    workspace_.revealFiles({"/x/y.txt", "/z/w.txt"});
    EXPECT_TRUE(until([this] { return noted() == "xdg-open|/x"; }));
    workspace_.revealFiles({});
}

TEST_F(WorkspaceTest, NobodyIsToldAfterItsEnd) {
    provide("xdg-open");
    bool told = false;
    {
        LinuxWorkspace workspace(log_);
        workspace.openFile("/a", [&](bool) { told = true; });
        workspace.openInTextEditor("/a", [&](bool) { told = true; });
    }
    until([] { return false; }, 200);
    EXPECT_FALSE(told);
}

} // namespace

} // namespace rb
