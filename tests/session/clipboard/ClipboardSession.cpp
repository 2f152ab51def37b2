#include "tests/session/clipboard/ClipboardSession.h"

#include "desktops/linux/KeyedArchive.h"
#include "tests/linux/MemoryStore.h"

#include <QImage>

#include <cstdlib>
#include <filesystem>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

namespace fs = std::filesystem;

std::vector<RBClipItem> ClipboardSessionTest::items() {
    std::vector<RBClipItem> found;
    const auto file = readFile(archive());
    if (!file) {
        return found;
    }
    const DecodedArchive decoded =
        decodeArchive(RBClipItem::archiveClass(), std::make_shared<const MemoryStore>(*file));
    EXPECT_TRUE(decoded.objects) << decoded.fault;
    for (const ArchiveObject& object : decoded.objects.value_or(std::vector<ArchiveObject>())) {
        found.push_back(RBClipItem::decode(object, 0));
    }
    return found;
}

std::vector<std::string> ClipboardSessionTest::texts() {
    std::vector<std::string> found;
    for (const RBClipItem& item : items()) {
        found.push_back(item.text().value_or("kind " + std::to_string(item.kind())));
    }
    return found;
}

bool ClipboardSessionTest::waitForNewest(const std::string& text, double limit) {
    return waitUntil(
        [&] {
            const auto found = texts();
            return !found.empty() && found.front() == text;
        },
        limit);
}

std::string ClipboardSessionTest::file(const std::string& name, const std::string& contents) {
    const std::string path = session().folder() + "/" + name;
    writeFile(path, contents);
    return path;
}

void ClipboardSessionTest::xclip(const std::string& contents, const std::string& target, const std::string& selection) {
    Program& program =
        session().start({"xclip", "-selection", selection, "-t", target, "-i", file("copied", contents)});
    ASSERT_EQ(program.waitForExit(), 0) << program.output();
}

std::string ClipboardSessionTest::paste(const std::string& target) {
    Program& program = session().start({"xclip", "-selection", "clipboard", "-t", target, "-o"});
    EXPECT_TRUE(program.waitForExit(10));
    return program.output();
}

void ClipboardSessionTest::chooseEntry(std::uint32_t key, const std::vector<std::uint32_t>& modifiers) {
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Right);
    ASSERT_TRUE(waitUntil([&] { return x().viewableOfClass(menuClass).size() == 2; }));
    x().tapKey(key, modifiers);
    ASSERT_TRUE(waitUntil([&] { return x().viewableOfClass(menuClass).empty(); }));
}

std::string ClipboardSessionTest::largePicture() {
    QImage image(900, 500, QImage::Format_RGB32);
    std::uint32_t state = 1;
    for (int y = 0; y < image.height(); ++y) {
        for (int column = 0; column < image.width(); ++column) {
            state = state * 1664525U + 1013904223U;
            image.setPixel(column, y, state >> 8U);
        }
    }
    const std::string path = (fs::temp_directory_path() / "rookbay-clip-XXXXXX.png").string();
    std::string name = path;
    const int made = mkstemps(name.data(), 4);
    EXPECT_GE(made, 0);
    ::close(made);
    EXPECT_TRUE(image.save(QString::fromStdString(name)));
    std::string bytes = readFile(name).value_or("");
    fs::remove(name);
    return bytes;
}

} // namespace rb
