#include "tests/session/SessionTest.h"

#include <algorithm>
#include <filesystem>
#include <sodium.h>
#include <xkbcommon/xkbcommon-keysyms.h>

// The installed program with its update helper, a primary feed and a mirror on this machine.
namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr const char* windowTitle = "Rook Bay 更新";

class UpdatesTest : public SessionTest {
protected:
    UpdatesTest() {
        fs::create_directories(web_);
        fs::create_directories(installed_);
        for (const char* program : {ROOKBAY_PROGRAM, UPDATE_PROGRAM}) {
            fs::copy(program, installed_);
        }
        // An installer that only notes what it was given.
        fs::create_directories(session().folder() + "/bin");
        writeFile(session().folder() + "/bin/xdg-open",
                  "#!/bin/sh\nprintf '%s' \"$1\" >" + session().folder() + "/opened\n");
        fs::permissions(session().folder() + "/bin/xdg-open", fs::perms::owner_all);
        session().environment["PATH"] = session().folder() + "/bin:" + session().environment["PATH"];
        session().start({"python3", FEED_SERVER, web_, session().folder() + "/port"});
        EXPECT_TRUE(waitUntil([this] { return fs::exists(session().folder() + "/port"); }));
        port_ = readFile(session().folder() + "/port").value_or("");
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(public_, secret_);
        writeFile(web_ + "/page.html", "<html>login</html>");
    }

    std::string base64(const unsigned char* bytes, std::size_t size) const {
        std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
        sodium_bin2base64(text.data(), text.size(), bytes, size, sodium_base64_VARIANT_ORIGINAL);
        text.pop_back(); // the zero
        return text;
    }
    // Puts a feed with one package of that version on the server.
    void publish(const std::string& version) {
        const std::string tree = session().folder() + "/tree";
        fs::create_directories(tree + "/DEBIAN");
        writeFile(tree + "/DEBIAN/control", "Package: rookbay\nVersion: " + version +
                                                "-1\nArchitecture: all\nMaintainer: a <a@b.example>\nDescription: d\n");
        EXPECT_EQ(session().start({"dpkg-deb", "--root-owner-group", "--build", tree, web_ + "/p.deb"}).waitForExit(20), 0);
        const std::string content = readFile(web_ + "/p.deb").value_or("");
        unsigned char signature[crypto_sign_BYTES];
        crypto_sign_detached(signature, nullptr, reinterpret_cast<const unsigned char*>(content.data()), content.size(),
                             secret_);
        writeFile(web_ + "/feed.xml",
                  "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><item>"
                  "<description>新</description><enclosure sparkle:os=\"linux\" url=\"/p.deb\" sparkle:version=\"" +
                      version + "\" length=\"" + std::to_string(content.size()) + "\" sparkle:edSignature=\"" +
                      base64(signature, sizeof signature) + "\"/></item></channel></rss>");
    }
    std::string address(const std::string& path) const { return "http://127.0.0.1:" + port_ + path; }
    void start(const std::string& primary, const std::string& mirror) {
        writeFile(installed_ + "/info.json", R"({"SUFeedURL": ")" + address(primary) + R"(", "SUPublicEDKey": ")" +
                                                 base64(public_, sizeof public_) + R"(", "RBMirrorFeedURL": ")" +
                                                 (mirror.empty() ? "" : address(mirror)) + "\"}");
        session().start({installed_ + "/rookbay"});
        ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuBarClass).empty(); }));
    }
    void chooseCheck() {
        ASSERT_NE(openMenu(), 0U);
        // The last but one item; the menu wraps around.
        x().tapKey(XKB_KEY_Up);
        x().tapKey(XKB_KEY_Up);
        x().tapKey(XKB_KEY_Return);
    }
    bool waitForWindow() {
        return waitUntil([this] {
            const auto window = x().viewableTitled(windowTitle);
            return window && x().hasFocus(window->window);
        });
    }
    bool windowIsGone() {
        return waitUntil([this] { return !x().viewableTitled(windowTitle); });
    }
    bool usesMirror() { return defaults()["RBUseMirrorFeed"].toBool(); }
    std::string opened() { return readFile(session().folder() + "/opened").value_or(""); }

    std::string web_ = session().folder() + "/web";
    std::string installed_ = session().folder() + "/installed";
    std::string port_;
    unsigned char public_[crypto_sign_PUBLICKEYBYTES] = {};
    unsigned char secret_[crypto_sign_SECRETKEYBYTES] = {};
};

TEST_F(UpdatesTest, TheMirrorStandsInAndItsPackageReachesTheInstaller) {
    publish("99.0");
    start("/dead/feed.xml", "/feed.xml");
    chooseCheck();
    ASSERT_TRUE(waitForWindow()) << "long before the dead one would be given up";
    EXPECT_TRUE(usesMirror());
    // The offer's button is the default one; until the offer is there Return does nothing.
    ASSERT_TRUE(waitUntil(
        [this] {
            x().tapKey(XKB_KEY_Return);
            return waitUntil([this] { return !opened().empty(); }, 1);
        },
        20));
    EXPECT_EQ(opened(), session().folder() + "/cache/rook-bay/updates/rookbay-99.0.deb");
    EXPECT_EQ(readFile(opened()), readFile(web_ + "/p.deb"));
    EXPECT_EQ(session().processes("rookbay-update").size(), 1U);
    x().tapKey(XKB_KEY_Escape);
    EXPECT_TRUE(windowIsGone());
}

TEST_F(UpdatesTest, APageInsteadOfAFeedLosesToASlowFeed) {
    publish("0.0.1");
    start("/page.html", "/slow/feed.xml");
    chooseCheck();
    ASSERT_TRUE(waitForWindow());
    EXPECT_TRUE(usesMirror());
    // Asking again brings the same window forward.
    chooseCheck();
    EXPECT_TRUE(staysTrue(
        [this] {
            const auto windows = x().windows();
            return std::count_if(windows.begin(), windows.end(), [](const WindowFacts& window) {
                       return window.viewable && window.title == windowTitle;
                   }) == 1;
        },
        2));
    x().tapKey(XKB_KEY_Escape);
    EXPECT_TRUE(windowIsGone());
    EXPECT_EQ(opened(), "");
}

TEST_F(UpdatesTest, AFeedThatFailsMakesTheNextCheckGoToTheOther) {
    start("/gone.xml", "/gone-too.xml");
    chooseCheck();
    ASSERT_TRUE(waitForWindow());
    EXPECT_FALSE(usesMirror()) << "neither passed, so the choice stays for this check";
    x().tapKey(XKB_KEY_Escape);
    EXPECT_TRUE(windowIsGone());
    EXPECT_TRUE(waitUntil([this] { return usesMirror(); }));
}

TEST_F(UpdatesTest, QuittingTakesTheCheckAlong) {
    publish("99.0");
    start("/feed.xml", "");
    chooseCheck();
    ASSERT_TRUE(waitForWindow());
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_q, {XKB_KEY_Control_L});
    EXPECT_TRUE(windowIsGone());
    EXPECT_TRUE(waitUntil([this] { return session().processes("rookbay-update").empty(); }));
}

} // namespace

} // namespace rb
