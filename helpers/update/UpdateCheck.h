#pragma once

#include "helpers/update/Appcast.h"
#include "helpers/update/Fetch.h"
#include "helpers/update/PackageFile.h"
#include "helpers/update/Signature.h"
#include "helpers/update/UpdateView.h"
#include "platform/Handle.h"

#include <QNetworkAccessManager>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QProcess;

namespace rb {

// The codes under which the update framework knows what went wrong.
enum class UpdateErrorCode {
    FeedNotUnderstood = 1000,
    FeedNotLoaded = 1002,
    NoPlaceToStore = 2000,
    DownloadFailed = 2001,
    NotSigned = 3001,
    InstallationFailed = 4005,
};

// What the feed offers a program of this version on this system.
struct UpdateChoice {
    std::optional<AppcastItem> item = std::nullopt; // the newest newer one that is signed and can be fetched
    bool unsignedOnly = false;                      // there are newer ones, but nobody signed for them
};
// `system` is like "linux-x86_64".
UpdateChoice chooseUpdate(const Appcast& appcast, const std::string& version, const std::string& system);

// One check from the feed to the system's installer. The feed and whatever it names are not believed: addresses are
// HTTPS or this machine's, sizes are limited, a package must carry the key's signature and be, by its own word, the
// program in the version that was offered, and that must be newer than this one. Main thread only.
class UpdateCheck {
public:
    struct Settings {
        std::string feed = {};
        std::string key = {};     // base64
        std::string version = {}; // of the running program
        std::string system = {};
        std::string folder = {}; // for the download
        FetchLimits feedLimits = {};
        FetchLimits packageLimits = {.silence = 30, .whole = 0, .bytes = std::uint64_t{512} << 20};
    };
    // Told once, when it went wrong; the view shows it then.
    using Failed = std::function<void(UpdateErrorCode code, const std::string& detail)>;

    UpdateCheck(Settings settings, UpdateView& view, Failed failed);
    ~UpdateCheck();
    UpdateCheck(const UpdateCheck&) = delete;
    UpdateCheck& operator=(const UpdateCheck&) = delete;

    void start();
    // The user wants what was offered.
    void install();

private:
    void feedArrived(const Fetch::Result& result);
    void packageArrived(const Fetch::Result& result);
    bool takeChunk(const QByteArray& bytes, std::uint64_t announced);
    void inspect();
    void inspected(const std::string& fields);
    void handOver();
    // Runs a program to its end; what it printed, or nothing when it failed or took too long.
    void run(const std::vector<std::string>& words, std::function<void(const std::optional<std::string>&)> done);
    void fail(UpdateErrorCode code, const std::string& detail);

    Settings settings_;
    UpdateView& view_;
    Failed failed_;
    std::optional<UpdateKey> key_;
    QNetworkAccessManager network_;
    std::unique_ptr<Fetch> fetch_;
    std::string feedText_;
    AppcastItem item_;
    QUrl packageAddress_;
    std::unique_ptr<PackageFile> package_;
    std::uint64_t received_ = 0;
    std::string storageError_;
    std::unique_ptr<QProcess> process_; // an inspection under way
    Lifetime lifetime_;
};

} // namespace rb
