#include "tests/linux/LinuxFixture.h"

#include <QFile>
#include <QXmlStreamReader>

#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// The shell script inside the workflow that Finder runs on macOS, here with programs of the test's own.
class WorkflowScriptTest : public testing::Test {
protected:
    WorkflowScriptTest() {
        QFile file(QStringLiteral(WORKFLOW "/Contents/document.wflow"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QXmlStreamReader reader(&file);
        QString key;
        while (!reader.atEnd()) {
            reader.readNext();
            if (reader.isStartElement() && reader.name() == QLatin1String("key")) {
                key = reader.readElementText();
            } else if (reader.isStartElement() && key == QLatin1String("COMMAND_STRING")) {
                writeText(home_ / "script", reader.readElementText().toStdString());
                key.clear();
            }
        }
        EXPECT_FALSE(reader.hasError());
        fs::create_directory(home_ / "bin");
        for (const char* program : {"open", "osascript"}) {
            writeProgram(home_ / ("bin/" + std::string(program)),
                         "printf '%s ' " + std::string(program) + " \"$@\" >>'" + home_ / "calls" + "'");
        }
        writeProgram(home_ / "bin/uuidgen", "echo 8A6E0804-2BD0-4672-B79D-D97027F9071A");
        fs::create_directory(home_ / "资料 夹");
    }
    // What it called.
    std::string run(const std::string& arguments) const {
        const std::string command =
            "PATH='" + home_ / "bin" + "':/usr/bin:/bin /bin/sh '" + home_ / "script" + "' " + arguments;
        EXPECT_EQ(std::system(command.c_str()), 0); // NOLINT(concurrency-mt-unsafe)
        const std::string calls = readText(home_ / "calls");
        fs::remove(home_ / "calls");
        return calls;
    }
    std::string in(const std::string& name) const { return home_ / "资料 夹/" + name; }

    TemporaryFolder home_;
};

TEST_F(WorkflowScriptTest, MakesAnEmptyFileUnderAFreeNameAndOpensIt) {
    const std::string folder = "'" + home_ / "资料 夹" + "'";
    EXPECT_EQ(run(folder), "open -b com.apple.TextEdit " + in("新建文本.txt") + " ");
    EXPECT_EQ(fs::file_size(in("新建文本.txt")), 0U);
    writeText(in("新建文本.txt"), "mine");
    fs::create_symlink(home_ / "nowhere", in("新建文本 2.txt"));
    EXPECT_EQ(run(folder + "/"), "open -b com.apple.TextEdit " + in("新建文本 3.txt") + " ");
    EXPECT_EQ(readText(in("新建文本.txt")), "mine");
    EXPECT_FALSE(fs::exists(home_ / "nowhere"));
    // Files and places that are gone are no folders.
    EXPECT_EQ(run("'" + in("新建文本.txt") + "' /nowhere/at/all"), "");
}

TEST_F(WorkflowScriptTest, ShowsTheFileWhereTheEditorDoesNotStart) {
    writeProgram(home_ / "bin/open", "printf '%s ' open \"$@\" >>'" + home_ / "calls" + "'; [ \"$1\" != -b ]");
    EXPECT_THAT(run("'" + home_ / "资料 夹" + "'"), HasSubstr("open -R " + in("新建文本.txt")));
}

TEST_F(WorkflowScriptTest, TellsWhenNothingCanBeMade) {
    // Where not even the superuser makes files.
    EXPECT_THAT(run("/proc"), HasSubstr("osascript -e display alert \"无法创建文本文件\""));
}

} // namespace

} // namespace rb
