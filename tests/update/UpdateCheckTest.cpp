#include "helpers/update/UpdateCheck.h"

#include "tests/linux/LinuxFixture.h"
#include "tests/update/FeedServer.h"

#include <QByteArray>

#include <cstdint>
#include <sodium.h>

namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// Remembers what the user would have seen, one word each.
class RecordingView final : public UpdateView {
public:
    void showChecking() override { seen += "checking "; }
    void showUpToDate(const std::string& version) override { seen += "up-to-date:" + version + " "; }
    void showOffer(const UpdateOffer& shown) override {
        offer = shown;
        seen += "offer:" + shown.version + " ";
    }
    void showDownload(std::uint64_t received, std::uint64_t whole) override {
        if (!seen.ends_with("download ")) {
            seen += "download ";
        }
        progress = {received, whole};
    }
    void showVerifying() override { seen += "verifying "; }
    void showHandedOver() override { seen += "handed-over "; }
    void showProblem(UpdateProblem, const std::string&) override { seen += "problem "; }

    std::string seen;
    UpdateOffer offer;
    std::pair<std::uint64_t, std::uint64_t> progress;
};

std::string base64(const unsigned char* bytes, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size)).toBase64().toStdString();
}

// A pair of keys of the test's own.
class Signer {
public:
    Signer() {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(public_, secret_);
    }
    std::string key() const { return base64(public_, sizeof public_); }
    std::string sign(const std::string& content) const {
        unsigned char signature[crypto_sign_BYTES];
        crypto_sign_detached(signature, nullptr, reinterpret_cast<const unsigned char*>(content.data()), content.size(),
                             secret_);
        return base64(signature, sizeof signature);
    }

private:
    unsigned char public_[crypto_sign_PUBLICKEYBYTES] = {};
    unsigned char secret_[crypto_sign_SECRETKEYBYTES] = {};
};

class UpdateCheckTest : public EventLoopFixture {
protected:
    UpdateCheckTest() {
        // In front of the search path: an installer that only notes what it was given.
        writeProgram(home_ / "xdg-open", "printf '%s' \"$1\" >" + home_ / "opened");
        path_ = qgetenv("PATH");
        qputenv("PATH", QByteArray::fromStdString(home_.path() + ":") + path_);
        settings_ = {.feed = server_.address("/feed.xml"),
                     .key = signer_.key(),
                     .version = "0.1.0",
                     .system = "linux-x86_64",
                     .folder = home_ / "updates"};
    }
    ~UpdateCheckTest() override { qputenv("PATH", path_); }

    // A real Debian package.
    std::string package(const std::string& version, const std::string& name = "rookbay") const {
        const std::string tree = home_ / ("tree-" + name + version);
        fs::create_directories(tree + "/DEBIAN");
        writeText(tree + "/DEBIAN/control", "Package: " + name + "\nVersion: " + version +
                                                "\nArchitecture: all\nMaintainer: a <a@b.example>\nDescription: d\n");
        const std::string file = home_ / (name + version + ".deb");
        EXPECT_EQ(std::system(("dpkg-deb --root-owner-group --build " + tree + " " + file + " >/dev/null").c_str()), 0);
        return readText(file);
    }
    static std::string item(const std::string& version, const std::string& url, const std::string& signature,
                            std::uint64_t length) {
        return "<item><description>说明</description><enclosure sparkle:os=\"linux\" url=\"" + url +
               "\" sparkle:version=\"" + version + "\" length=\"" + std::to_string(length) +
               "\" sparkle:edSignature=\"" + signature + "\"/></item>";
    }
    void serveFeed(const std::string& items) {
        server_.serve("/feed.xml",
                      "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>" + items +
                          "</channel></rss>");
    }
    // A feed with one version whose package is in order.
    void serveUpdate(const std::string& version, const std::string& content) {
        serveFeed(item(version, "/p.deb", signer_.sign(content), content.size()));
        server_.serve("/p.deb", content);
    }

    // Runs a check, as far as it goes, with a user who wants every update; its error's code, 0 for none.
    int run() {
        code_ = 0;
        view_ = {};
        fs::remove(home_ / "opened");
        check_ = std::make_unique<UpdateCheck>(settings_, view_, [this](UpdateErrorCode code, const std::string& detail) {
            code_ = static_cast<int>(code);
            detail_ = detail;
        });
        check_->start();
        EXPECT_TRUE(until([this] { return ended() || view_.seen.find("offer") != std::string::npos; }, 20000));
        if (!ended()) {
            check_->install();
            EXPECT_TRUE(until([this] { return ended(); }, 20000)) << view_.seen;
        }
        return code_;
    }
    bool ended() const {
        return view_.seen.ends_with("problem ") || view_.seen.find("up-to-date") != std::string::npos ||
               view_.seen.ends_with("handed-over ");
    }
    std::size_t filesLeft() const {
        std::size_t count = 0;
        if (fs::exists(settings_.folder)) {
            for ([[maybe_unused]] const auto& entry : fs::directory_iterator(settings_.folder)) {
                ++count;
            }
        }
        return count;
    }
    std::string opened() const { return readText(home_ / "opened"); }

    TemporaryFolder home_;
    QByteArray path_;
    FeedServer server_;
    Signer signer_;
    UpdateCheck::Settings settings_;
    RecordingView view_;
    int code_ = 0;
    std::string detail_;
    std::unique_ptr<UpdateCheck> check_;
};

TEST_F(UpdateCheckTest, ASignedNewerPackageReachesTheInstaller) {
    const std::string content = package("0.2.0-1");
    serveUpdate("0.2.0", content);
    EXPECT_EQ(run(), 0) << detail_;
    EXPECT_EQ(view_.seen, "checking offer:0.2.0 download verifying handed-over ");
    EXPECT_EQ(view_.offer.currentVersion, "0.1.0");
    EXPECT_EQ(view_.offer.notes, "说明");
    EXPECT_EQ(view_.progress, std::pair(content.size(), content.size()));
    EXPECT_EQ(opened(), home_ / "updates/rookbay-0.2.0.deb");
    EXPECT_EQ(readText(opened()), content);
    EXPECT_THAT(server_.lastRequest(), HasSubstr("RookBay/"));
    EXPECT_THAT(server_.lastRequest(), Not(HasSubstr("Cookie")));
}

TEST_F(UpdateCheckTest, WhatIsNotNewerIsNoUpdate) {
    for (const char* version : {"0.1.0", "0.0.9", "0.1.0~rc1"}) {
        serveFeed(item(version, "/p.deb", signer_.sign("x"), 1));
        EXPECT_EQ(run(), 0);
        EXPECT_EQ(view_.seen, "checking up-to-date:0.1.0 ");
    }
    EXPECT_EQ(server_.requests("/p.deb"), 0);
}

TEST_F(UpdateCheckTest, AnotherHandsPackageIsThrownAway) {
    const std::string content = package("0.2.0-1");
    const Signer other;
    const std::string right = signer_.sign(content);
    struct Case {
        const char* name;
        std::string signature;
        std::string served;
    };
    std::string changed = content;
    changed[changed.size() / 2] = static_cast<char>(changed[changed.size() / 2] ^ 1);
    for (const Case& tested : std::initializer_list<Case>{{"another key", other.sign(content), content},
                                                          {"changed on the way", right, changed},
                                                          {"no base64", "not a signature!", content},
                                                          {"too short", right.substr(0, 40), content},
                                                          {"with more behind it", right + right, content}}) {
        SCOPED_TRACE(tested.name);
        serveFeed(item("0.2.0", "/p.deb", tested.signature, content.size()));
        server_.serve("/p.deb", tested.served);
        EXPECT_EQ(run(), 3001);
        EXPECT_EQ(filesLeft(), 0U);
        EXPECT_EQ(opened(), "");
    }
    serveFeed(item("0.2.0", "/p.deb", "", content.size()));
    EXPECT_EQ(run(), 3001);
    EXPECT_EQ(view_.seen, "checking problem ") << "an unsigned one is not even offered";
    settings_.key = "AAAA";
    EXPECT_EQ(run(), 3001);
}

TEST_F(UpdateCheckTest, AnOldPackageUnderANewNumberIsNoUpdate) {
    serveUpdate("0.3.0", package("0.0.5-1")); // signed by us, long ago
    EXPECT_EQ(run(), 3001);
    EXPECT_THAT(detail_, HasSubstr("0.0.5"));
    serveUpdate("0.3.0", package("0.3.0-1", "other"));
    EXPECT_EQ(run(), 3001);
    EXPECT_THAT(detail_, HasSubstr("another program"));
    serveUpdate("0.3.0", "#!/bin/sh\nrm -rf ~\n");
    EXPECT_EQ(run(), 3001);
    EXPECT_EQ(opened(), "");
    EXPECT_EQ(filesLeft(), 0U);
}

TEST_F(UpdateCheckTest, AFeedThatCannotBeHadIsTold) {
    server_.serve("/feed.xml", "<html>login</html>");
    EXPECT_EQ(run(), 1000) << "a page instead of a feed";
    server_.serve("/feed.xml", "<rss/>", "500 Broken");
    EXPECT_EQ(run(), 1002);
    server_.on("/feed.xml", [](QTcpSocket& connection) { connection.abort(); });
    EXPECT_EQ(run(), 1002);
    server_.on("/feed.xml", [](QTcpSocket& connection) {
        connection.write(FeedServer::head("200 OK", 5000).c_str());
        connection.write("<rss>");
        connection.disconnectFromHost();
    });
    EXPECT_EQ(run(), 1002) << "broken off";
    settings_.feedLimits.silence = 0.3;
    server_.on("/feed.xml", [](QTcpSocket&) {});
    EXPECT_EQ(run(), 1002) << "dead";
    settings_.feedLimits.whole = 0.5;
    server_.on("/feed.xml", [](QTcpSocket& connection) {
        connection.write(FeedServer::head("200 OK", 500000).c_str());
        auto* drip = new QTimer(&connection);
        QObject::connect(drip, &QTimer::timeout, &connection, [&connection] { connection.write(" "); });
        drip->start(20);
    });
    EXPECT_EQ(run(), 1002) << "one byte after another for ever";
    settings_.feed = "http://a.example/feed.xml";
    EXPECT_EQ(run(), 1002) << "nobody may read along";
}

TEST_F(UpdateCheckTest, RedirectsAreFollowedWithinLimits) {
    serveUpdate("0.2.0", package("0.2.0-1"));
    server_.redirect("/old", "/feed.xml");
    settings_.feed = server_.address("/old");
    EXPECT_EQ(run(), 0) << detail_;
    server_.redirect("/old", "/older");
    server_.redirect("/older", "/old");
    EXPECT_EQ(run(), 1002);
    EXPECT_LE(server_.requests("/older"), 6);
    for (const char* target : {"http://a.example/feed.xml", "file:///etc/passwd", "ftp://127.0.0.1/"}) {
        server_.redirect("/old", target);
        EXPECT_EQ(run(), 1002) << target;
    }
}

TEST_F(UpdateCheckTest, APackageThatDoesNotComeWholeIsADownloadError) {
    const std::string content = package("0.2.0-1");
    serveUpdate("0.2.0", content);
    const auto expectFailure = [this](const char* what) {
        SCOPED_TRACE(what);
        EXPECT_EQ(run(), 2001);
        EXPECT_EQ(filesLeft(), 0U);
        EXPECT_EQ(opened(), "");
    };
    server_.serve("/p.deb", content.substr(0, content.size() / 2));
    expectFailure("shorter than the feed says");
    server_.on("/p.deb", [&](QTcpSocket& connection) {
        connection.write(FeedServer::head("200 OK", content.size()).c_str());
        connection.write(content.data(), static_cast<qint64>(content.size() / 2));
        connection.disconnectFromHost();
    });
    expectFailure("broken off");
    server_.serve("/p.deb", content + "more");
    expectFailure("longer than the feed says");
    server_.on("/p.deb", [](QTcpSocket& connection) {
        connection.write(FeedServer::head("200 OK", std::uint64_t{1} << 30).c_str());
        connection.write(std::string(65536, 'x').c_str());
    });
    expectFailure("a gigabyte, announced");
    server_.on("/p.deb", [](QTcpSocket& connection) {
        connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        const std::string block(65536, 'x');
        QObject::connect(&connection, &QTcpSocket::bytesWritten, &connection, [&connection, block] {
            if (connection.bytesToWrite() < 65536) {
                connection.write(block.data(), static_cast<qint64>(block.size()));
            }
        });
        connection.write(block.data(), static_cast<qint64>(block.size()));
    });
    expectFailure("a gigabyte, not announced");
    serveFeed(item("0.2.0", "http://a.example/p.deb", signer_.sign(content), content.size()));
    expectFailure("from an address that isn't secure");
    serveFeed(item("0.2.0", "/gone.deb", signer_.sign(content), content.size()));
    expectFailure("not there");
}

TEST_F(UpdateCheckTest, WithoutALengthInTheFeedTheLimitHolds) {
    const std::string content = package("0.2.0-1");
    serveFeed(item("0.2.0", "/p.deb", signer_.sign(content), 0));
    server_.serve("/p.deb", content);
    EXPECT_EQ(run(), 0) << detail_;
    settings_.packageLimits.bytes = content.size() - 1;
    EXPECT_EQ(run(), 2001);
}

TEST_F(UpdateCheckTest, WhatCannotBeStoredOrOpenedIsTold) {
    serveUpdate("0.2.0", package("0.2.0-1"));
    writeText(home_ / "file", "");
    settings_.folder = home_ / "file";
    EXPECT_EQ(run(), 2000);
    settings_.folder = home_ / "updates";
    writeProgram(home_ / "xdg-open", "exit 3");
    EXPECT_EQ(run(), 4005);
    EXPECT_EQ(filesLeft(), 1U) << "the verified package stays for the user";
}

TEST_F(UpdateCheckTest, ACheckCanBeDroppedAtAnyTime) {
    serveUpdate("0.2.0", package("0.2.0-1"));
    for (const char* moment : {"checking ", "download ", "verifying "}) {
        SCOPED_TRACE(moment);
        view_ = {};
        check_ = std::make_unique<UpdateCheck>(settings_, view_, [](UpdateErrorCode, const std::string&) {});
        check_->start();
        const std::string wanted(moment);
        EXPECT_TRUE(until([&] {
            if (wanted != "checking " && view_.seen.ends_with("offer:0.2.0 ")) {
                check_->install();
            }
            return view_.seen.ends_with(wanted);
        }));
        check_.reset();
        EXPECT_EQ(filesLeft(), 0U);
        until([] { return false; }, 50);
    }
}

} // namespace

} // namespace rb
