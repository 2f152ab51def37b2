#include "desktops/linux/UriList.h"
#include "desktops/linux/PasteboardForms.h"
#include "desktops/virtual/RunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(UriListTest, LocalFilesAreFoundAmongWhatProgramsWrite) {
    EXPECT_THAT(localFilesOf("file:///a%20b\r\nfile:///%E4%B8%AD\r\n"), ElementsAre("/a b", "/中"));
    EXPECT_THAT(localFilesOf("copy\nfile:///a\nfile:///b/"), ElementsAre("/a", "/b"));
    EXPECT_THAT(localFilesOf(std::string_view("file:///a\0", 10)), ElementsAre("/a")) << "some end it with a zero";
    EXPECT_THAT(localFilesOf("# remark\nFILE://localhost/x\nfile:/y\nfile:///"), ElementsAre("/x", "/y", "/"));
    EXPECT_THAT(localFilesOf("https://example.org/a\nfile://elsewhere.example/b\nfile:relative\n/plain\nfile:///%0"),
                IsEmpty());
    EXPECT_THAT(localFilesOf("file:///a%00b\nfile:///%zz"), IsEmpty());
    for (const std::string path : {"/中 文/100%.txt", "/a\nb#?", "/bad\xff"}) {
        EXPECT_THAT(localFilesOf(fileUri(path)), ElementsAre(path));
    }
}

TEST(PasteboardFormsTest, TextsAreMadeWellFormed) {
    const auto bytes = [](const std::string& text) { return Bytes(text.begin(), text.end()); };
    EXPECT_EQ(textFrom("UTF8_STRING", bytes("中")), "中");
    EXPECT_EQ(textFrom("STRING", bytes("\xe9")), "é");
    EXPECT_EQ(textFrom("text/plain", bytes("\xe9")), "é");
    EXPECT_EQ(textFrom("text/plain", bytes("é")), "é");
    EXPECT_EQ(textFrom("UTF8_STRING", bytes("a\xed\xa0\x80z")).front(), 'a') << "half a character";
    EXPECT_EQ(textFrom("UTF8_STRING", bytes("a\xffz")), "a\uFFFDz");
    EXPECT_EQ(textFrom("UTF8_STRING", bytes(std::string("a\0b\0", 4))), "ab");
}

TEST(PasteboardFormsTest, FilesAreOfferedAsFileManagersAndEditorsWantThem) {
    VirtualRunLoop loop;
    auto forms = formsOf(PasteboardFiles{{"/a b", "/c"}}, loop);
    const auto of = [&](const std::string& target) {
        for (SelectionForm& form : forms) {
            if (form.target == target) {
                const SharedBytes bytes = form.bytes().bytes();
                return std::string(bytes->begin(), bytes->end());
            }
        }
        return std::string("missing");
    };
    EXPECT_EQ(of("text/uri-list"), "file:///a%20b\r\nfile:///c\r\n");
    EXPECT_EQ(of("x-special/gnome-copied-files"), "copy\nfile:///a%20b\nfile:///c");
    EXPECT_EQ(of("UTF8_STRING"), "/a b\n/c");
    EXPECT_TRUE(formsOf(PasteboardData{"com.example.type", std::make_shared<const Bytes>()}, loop).empty());
}

} // namespace

} // namespace rb
