#include "desktops/linux/QuickActions.h"

#include "desktops/linux/OwnFile.h"
#include "desktops/linux/QuickActionFiles.h"
#include "desktops/linux/ThunarActions.h"
#include "tests/linux/LinuxFixture.h"

#include <QByteArray>

#include <map>

namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr const char* title = "新建 TXT（Rook Bay）";

// File managers by name in a search path of the test's own.
class QuickActionsTest : public EventLoopFixture {
protected:
    QuickActionsTest() {
        for (const auto& [name, folder] : std::map<std::string, std::string>{{"PATH", "bin"},
                                                                             {"XDG_DATA_HOME", "data"},
                                                                             {"XDG_CONFIG_HOME", "config"},
                                                                             {"XDG_CONFIG_DIRS", "xdg"}}) {
            before_[name] = qgetenv(name.c_str());
            fs::create_directory(home_ / folder);
            qputenv(name.c_str(), QByteArray::fromStdString(home_ / folder));
        }
    }
    ~QuickActionsTest() override {
        for (const auto& [name, value] : before_) {
            value.isNull() ? qunsetenv(name.c_str()) : qputenv(name.c_str(), value);
        }
    }
    void provide(const std::string& program) { writeProgram(home_ / ("bin/" + program), "true"); }
    // Brings every place up to date; how many weren't.
    int install() {
        int changed = 0;
        for (const auto& action : actions_.textActions()) {
            if (action->installedVersion() == action->bundledVersion()) {
                continue;
            }
            ++changed;
            if (action->isInstalled()) {
                EXPECT_EQ(action->remove(), std::nullopt);
            }
            EXPECT_EQ(action->install(), std::nullopt);
            EXPECT_EQ(action->installedVersion(), action->bundledVersion());
        }
        return changed;
    }
    std::string thunarFile() const { return home_ / "config/Thunar/uca.xml"; }
    std::string nautilusFile() const { return home_ / ("data/nautilus/scripts/" + std::string(title)); }

    TemporaryFolder home_;
    std::map<std::string, QByteArray> before_;
    RecordingLog log_;
    LinuxQuickActions actions_{log_};
};

TEST_F(QuickActionsTest, AppearOnlyForProgramsThatAreThere) {
    EXPECT_EQ(install(), 0);
    EXPECT_TRUE(fs::is_empty(home_ / "data"));
    EXPECT_TRUE(fs::is_empty(home_ / "config"));
    for (const char* program : {"nautilus", "nemo", "caja", "thunar", "pcmanfm-qt", "dolphin"}) {
        provide(program);
    }
    EXPECT_EQ(install(), 7);
    EXPECT_EQ(install(), 0) << "nothing to do the second time";
    EXPECT_EQ(fs::status(nautilusFile()).permissions() & fs::perms::owner_exec, fs::perms::owner_exec);
    EXPECT_TRUE(fs::exists(home_ / "config/caja/scripts/" + std::string(title)));
    EXPECT_THAT(readText(home_ / "data/nemo/actions/rookbay-new-text.nemo_action"), HasSubstr("new-text %P\n"));
    EXPECT_THAT(readText(home_ / "data/file-manager/actions/rookbay-new-text.desktop"), HasSubstr("new-text %f\n"));
    const std::string menu = home_ / "data/kio/servicemenus/rookbay-new-text.desktop";
    EXPECT_EQ(fs::status(menu).permissions() & fs::perms::owner_exec, fs::perms::owner_exec) << "else not believed";
    EXPECT_THAT(readText(thunarFile()), HasSubstr("new-text %f</command>"));
    EXPECT_EQ(actions_.installedTextActions().size(), 7U);
    fs::remove_all(home_ / "bin");
    for (const auto& action : actions_.installedTextActions()) {
        EXPECT_EQ(action->remove(), std::nullopt) << "also for programs that are gone";
    }
    EXPECT_TRUE(actions_.installedTextActions().empty());
    EXPECT_FALSE(fs::exists(menu));
}

TEST_F(QuickActionsTest, OtherVersionsAreReplacedAndOtherPeoplesFilesAreNot) {
    provide("nautilus");
    provide("pcmanfm-qt");
    fs::create_directories(home_ / "data/nautilus/scripts");
    writeText(nautilusFile(), "#!/bin/sh\n# X-RookBay-Version=0.0.1 /usr/bin/rookbay\n");
    fs::create_directories(home_ / "data/file-manager/actions");
    const std::string foreign = home_ / "data/file-manager/actions/rookbay-new-text.desktop";
    writeText(foreign, "[Desktop Entry]\nName=mine\n");
    EXPECT_EQ(install(), 1);
    EXPECT_THAT(readText(nautilusFile()), HasSubstr("# X-RookBay-Version=" ROOKBAY_VERSION " "));
    EXPECT_EQ(readText(foreign), "[Desktop Entry]\nName=mine\n");
    EXPECT_THAT(log_.lines(), testing::Contains(HasSubstr("isn't ours")));
    // A link isn't ours either, wherever it leads.
    fs::rename(nautilusFile(), home_ / "elsewhere");
    fs::create_symlink(home_ / "elsewhere", nautilusFile());
    EXPECT_EQ(install(), 0);
    EXPECT_TRUE(fs::is_symlink(nautilusFile()));
    EXPECT_EQ(actions_.installedTextActions().size(), 0U);
}

TEST_F(QuickActionsTest, TheScriptTakesTheSelectedFolderOrTheOpenOne) {
    provide("nautilus");
    install();
    std::string script = readText(nautilusFile());
    // Runs it with a program of ours in the place of the real one.
    const std::size_t line = script.rfind("exec ");
    const std::size_t command = script.find(" new-text", line);
    script.replace(line + 5, command - line - 5, home_ / "note");
    writeProgram(home_ / "note", "printf '%s|' \"$@\" >" + home_ / "noted");
    writeText(home_ / "script", script);
    fs::create_directory(home_ / "新 文件夹");
    const auto run = [&](const std::string& selected) {
        const std::string line1 = "PATH=/usr/bin:/bin NAUTILUS_SCRIPT_CURRENT_URI=file:///open%20one "
                                  "NAUTILUS_SCRIPT_SELECTED_FILE_PATHS='" +
                                  selected + "' /bin/sh " + home_ / "script";
        EXPECT_EQ(std::system(line1.c_str()), 0);
        return readText(home_ / "noted");
    };
    EXPECT_EQ(run(""), "new-text|file:///open%20one|");
    EXPECT_EQ(run(home_ / "新 文件夹\n" + home_.path() + "\n"), "new-text|" + home_ / "新 文件夹|");
    EXPECT_EQ(run(home_ / "script\n"), "new-text|file:///open%20one|") << "a file is no folder";
}

TEST_F(QuickActionsTest, ThunarsFileKeepsEveryOtherAction) {
    provide("thunar");
    fs::create_directories(home_ / "config/Thunar");
    const std::string mine = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n<action>\n\t<name>打开终端 &amp; 更多"
                             "</name>\n\t<unique-id>1-1</unique-id>\n\t<command>x</command>\n</action>\n</actions>\n";
    writeText(thunarFile(), mine);
    EXPECT_EQ(install(), 1);
    const std::string with = readText(thunarFile());
    EXPECT_EQ(with.substr(0, mine.find("</actions>")), mine.substr(0, mine.find("</actions>")));
    EXPECT_EQ(findThunarAction(with)->version, quickActionVersionOf(fs::read_symlink("/proc/self/exe").string()));
    EXPECT_EQ(withoutThunarAction(with), mine);
    // An old one of ours in the middle goes, and only it.
    std::string old = with;
    const std::size_t version = old.find("rookbay-new-text-") + 17;
    old.replace(version, old.find('<', version) - version, "0.0.1 /x");
    old.insert(old.find("</actions>"), "<action><unique-id>2</unique-id></action>\n");
    writeText(thunarFile(), old);
    EXPECT_EQ(install(), 1);
    const std::string updated = readText(thunarFile());
    EXPECT_THAT(updated, Not(HasSubstr("0.0.1 /x")));
    EXPECT_THAT(updated, HasSubstr("<action><unique-id>2</unique-id></action>\n"));
    EXPECT_THAT(updated, HasSubstr("打开终端 &amp; 更多"));
}

TEST_F(QuickActionsTest, ThunarsActionsForAllUsersComeAlong) {
    provide("thunar");
    fs::create_directories(home_ / "xdg/Thunar");
    writeText(home_ / "xdg/Thunar/uca.xml",
              "<?xml version=\"1.0\"?>\n<!DOCTYPE actions [<!ELEMENT actions (action)+>]>\n<actions>\n<action><unique-id>all</unique-id></action>\n</actions>\n");
    EXPECT_EQ(install(), 1);
    EXPECT_THAT(readText(thunarFile()), HasSubstr("<unique-id>all</unique-id>"));
    EXPECT_EQ(fs::status(thunarFile()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(QuickActionsTest, ADamagedThunarFileStaysAsItIs) {
    provide("thunar");
    fs::create_directories(home_ / "config/Thunar");
    for (const char* broken : {"", "<actions><action>", "<html></actions>", "<!DOCTYPE a [<!ENTITY b \"c\">]><actions></actions>"}) {
        writeText(thunarFile(), broken);
        for (const auto& action : actions_.textActions()) {
            EXPECT_NE(action->install(), std::nullopt);
        }
        EXPECT_EQ(readText(thunarFile()), broken);
    }
}

TEST_F(QuickActionsTest, PathsAreQuotedForTheirReaders) {
    EXPECT_EQ(shellWord("/usr/bin/rookbay"), "/usr/bin/rookbay");
    EXPECT_EQ(shellWord("/a b/it's"), "'/a b/it'\\''s'");
    EXPECT_EQ(execWord("/a b/rookbay"), "\"/a b/rookbay\"");
    EXPECT_EQ(execWord("/100%/$x"), "\"/100%%/\\\\$x\"");
}

} // namespace

} // namespace rb
