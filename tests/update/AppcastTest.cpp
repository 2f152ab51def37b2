#include "helpers/update/Appcast.h"

#include "helpers/update/UpdateCheck.h"
#include "helpers/update/UpdateWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

std::string feed(const std::string& items) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><title>Rook Bay</title>" +
           items + "</channel></rss>";
}

std::string enclosure(const std::string& attributes) {
    return "<enclosure sparkle:os=\"linux\" url=\"a.deb\" " + attributes + "/>";
}

Appcast parse(const std::string& text) {
    std::string error;
    const auto appcast = parseAppcast(text, error);
    EXPECT_TRUE(appcast) << error;
    return appcast.value_or(Appcast{});
}

std::string refusal(const std::string& text) {
    std::string error;
    EXPECT_FALSE(parseAppcast(text, error)) << text.substr(0, 200);
    return error;
}

TEST(AppcastTest, ReadsWhatIsForThisSystem) {
    const Appcast appcast = parse(feed(
        "<item><title>0.2</title><description><![CDATA[<b>新</b>]]></description>"
        "<sparkle:version>0.2.0</sparkle:version><sparkle:shortVersionString> 0.2 版 </sparkle:shortVersionString>"
        "<enclosure url=\"https://a.example/RookBay.dmg\" length=\"9\" sparkle:edSignature=\"m\"/>"
        "<enclosure url=\"https://a.example/b.deb?x=1&amp;y=2\" length=\"12\" sparkle:os=\"linux-x86_64\" "
        "type=\"application/x-deb\" sparkle:edSignature=\"s=\"/></item>"
        "<item>" +
        enclosure("sparkle:version=\"0.1.5\" length=\"many\"") + "</item>"));
    EXPECT_THAT(appcast.items, testing::ElementsAre(AppcastItem{.version = "0.2.0",
                                                                .shownVersion = "0.2 版",
                                                                .notes = "<b>新</b>",
                                                                .url = "https://a.example/b.deb?x=1&y=2",
                                                                .signature = "s=",
                                                                .length = 12,
                                                                .system = "linux-x86_64"},
                                                    AppcastItem{.version = "0.1.5",
                                                                .shownVersion = "0.1.5",
                                                                .url = "a.deb",
                                                                .system = "linux"}));
}

TEST(AppcastTest, LeavesOutWhatCannotBeMeant) {
    const std::string none = feed("<item><sparkle:version>1</sparkle:version></item>"
                                  "<item>" +
                                  enclosure("") +
                                  "</item>"
                                  "<item><version>1</version>" +
                                  enclosure("version=\"1\"") +
                                  "</item>"
                                  "<item><sparkle:version>1</sparkle:version><enclosure sparkle:os=\"linux\"/></item>");
    EXPECT_EQ(parse(none), Appcast{});
    EXPECT_EQ(parse(feed("<image><item>" + enclosure("sparkle:version=\"1\"") + "</item></image>")), Appcast{});
    EXPECT_EQ(parse("<rss/>"), Appcast{});
}

TEST(AppcastTest, RefusesWhatIsNoFeed) {
    refusal("");
    refusal("<html><body><rss></rss></body></html>");
    refusal("hello");
    refusal("\xFF\xFE\x00");
    refusal(feed("<item>").substr(0, 150));
    refusal("<!DOCTYPE rss [<!ENTITY a \"b\">]><rss/>");
    refusal(feed("<item><description>&unknown;</description></item>"));
    std::string deep;
    for (int i = 0; i < 100; ++i) {
        deep += "<a>";
    }
    EXPECT_THAT(refusal("<rss>" + deep), testing::HasSubstr("deep"));
    refusal(feed("<item><description>" + std::string(70000, 'x') + "</description></item>"));
    std::string many;
    for (int i = 0; i < 1100; ++i) {
        many += "<item>" + enclosure("sparkle:version=\"1\"") + "</item>";
    }
    EXPECT_THAT(refusal(feed(many)), testing::HasSubstr("many"));
}

TEST(AppcastTest, TheNewestSignedVersionIsChosen) {
    const auto item = [](const std::string& version, const std::string& signature, const std::string& system = "linux") {
        return AppcastItem{.version = version, .url = "u", .signature = signature, .system = system};
    };
    const auto chosen = [](const std::vector<AppcastItem>& items) {
        const UpdateChoice choice = chooseUpdate({items}, "1.0", "linux-x86_64");
        return choice.item ? choice.item->version : choice.unsignedOnly ? "unsigned" : "none";
    };
    EXPECT_EQ(chosen({item("1.2", "s"), item("1.10", "s"), item("1.9", "s")}), "1.10");
    EXPECT_EQ(chosen({item("1.0", "s"), item("0.9", "s"), item("1.0.0", "")}), "none") << "never back";
    EXPECT_EQ(chosen({item("1.1", ""), item("0.9", "s")}), "unsigned");
    EXPECT_EQ(chosen({item("1.2", ""), item("1.1", "s")}), "1.1");
    EXPECT_EQ(chosen({item("1.2", "s", "linux-aarch64"), item("1.1", "s", "linux-x86_64")}), "1.1");
    EXPECT_EQ(chosen({item("../1.2", "s"), item("1/2", "s")}), "none") << "it becomes part of a file's name";
}

TEST(AppcastTest, NotesAreShownWithoutMarkup) {
    EXPECT_EQ(plainNotes("<h2>新</h2><ul><li>一</li><li>二</li></ul><img src=\"https://a.example/x.png\"/>"),
              QStringLiteral("新\n一\n二"));
    EXPECT_EQ(plainNotes("1 < 2\n"), QStringLiteral("1 < 2"));
}

} // namespace

} // namespace rb
