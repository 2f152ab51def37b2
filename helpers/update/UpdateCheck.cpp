#include "helpers/update/UpdateCheck.h"

#include "desktops/linux/ChildProcess.h"
#include "helpers/update/Address.h"
#include "helpers/update/Versions.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <compare>
#include <utility>

namespace rb {

namespace {

constexpr const char* packageName = "rookbay";
constexpr int httpOK = 200;
constexpr int inspectionLimit = 20000; // milliseconds
constexpr int handOverLimit = 5000;    // milliseconds; whoever still runs then has taken it

UpdateProblem problemOf(UpdateErrorCode code) {
    switch (code) {
    case UpdateErrorCode::FeedNotUnderstood:
    case UpdateErrorCode::FeedNotLoaded:
        return UpdateProblem::Feed;
    case UpdateErrorCode::NoPlaceToStore:
        return UpdateProblem::Storage;
    case UpdateErrorCode::DownloadFailed:
        return UpdateProblem::Download;
    case UpdateErrorCode::NotSigned:
        return UpdateProblem::Verification;
    case UpdateErrorCode::InstallationFailed:
        break;
    }
    return UpdateProblem::Installer;
}

// The value of a field as dpkg-deb prints them ("Version: 0.2.0-1").
std::string field(const std::string& fields, const std::string& name) {
    const std::string start = name + ": ";
    for (std::size_t line = 0; line < fields.size();) {
        const std::size_t end = std::min(fields.find('\n', line), fields.size());
        if (fields.compare(line, start.size(), start) == 0) {
            return fields.substr(line + start.size(), end - line - start.size());
        }
        line = end + 1;
    }
    return {};
}

} // namespace

UpdateChoice chooseUpdate(const Appcast& appcast, const std::string& version, const std::string& system) {
    UpdateChoice choice;
    bool sawUnsigned = false;
    for (const AppcastItem& item : appcast.items) {
        if ((item.system != "linux" && item.system != system) || !isVersion(item.version) ||
            std::is_lteq(compareVersions(item.version, version))) {
            continue;
        }
        if (item.signature.empty()) {
            sawUnsigned = true;
        } else if (!choice.item || std::is_gt(compareVersions(item.version, choice.item->version))) {
            choice.item = item;
        }
    }
    choice.unsignedOnly = sawUnsigned && !choice.item;
    return choice;
}

UpdateCheck::UpdateCheck(Settings settings, UpdateView& view, Failed failed)
    : settings_(std::move(settings))
    , view_(view)
    , failed_(std::move(failed)) {}

UpdateCheck::~UpdateCheck() {
    if (process_) {
        process_->disconnect(); // its end under our hands is nobody's news
        process_->kill();
    }
}

void UpdateCheck::start() {
    view_.showChecking();
    key_ = UpdateKey::read(settings_.key);
    if (!key_) {
        fail(UpdateErrorCode::NotSigned, "the configured key is no Ed25519 key");
        return;
    }
    const auto address = allowedAddress(settings_.feed);
    if (!address) {
        fail(UpdateErrorCode::FeedNotLoaded, "the feed's address is not HTTPS");
        return;
    }
    fetch_ = std::make_unique<Fetch>(
        network_, *address, settings_.feedLimits,
        [this](const QByteArray& bytes, std::uint64_t) {
            feedText_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
            return true;
        },
        [this](const Fetch::Result& result) { feedArrived(result); });
}

void UpdateCheck::feedArrived(const Fetch::Result& result) {
    if (!result.error.empty() || result.status != httpOK) {
        fail(UpdateErrorCode::FeedNotLoaded,
             result.error.empty() ? "the server answers with status " + std::to_string(result.status) : result.error);
        return;
    }
    std::string error;
    const auto appcast = parseAppcast(feedText_, error);
    if (!appcast) {
        fail(UpdateErrorCode::FeedNotUnderstood, error);
        return;
    }
    const UpdateChoice choice = chooseUpdate(*appcast, settings_.version, settings_.system);
    if (choice.unsignedOnly) {
        fail(UpdateErrorCode::NotSigned, "the feed offers a newer version without a signature");
        return;
    }
    if (!choice.item) {
        view_.showUpToDate(settings_.version);
        return;
    }
    item_ = *choice.item;
    const auto address = allowedRedirect(result.address, QUrl(QString::fromStdString(item_.url), QUrl::StrictMode));
    if (!address) {
        fail(UpdateErrorCode::DownloadFailed, "the package's address is not HTTPS");
        return;
    }
    packageAddress_ = *address;
    view_.showOffer({.version = item_.shownVersion,
                     .currentVersion = settings_.version,
                     .notes = item_.notes,
                     .length = item_.length});
}

void UpdateCheck::install() {
    if (packageAddress_.isEmpty() || package_) {
        return;
    }
    package_ = std::make_unique<PackageFile>();
    if (const auto error = package_->create(settings_.folder, item_.version)) {
        fail(UpdateErrorCode::NoPlaceToStore, *error);
        return;
    }
    FetchLimits limits = settings_.packageLimits;
    if (item_.length) {
        limits.bytes = std::min(limits.bytes, *item_.length);
    }
    view_.showDownload(0, item_.length.value_or(0));
    fetch_ = std::make_unique<Fetch>(
        network_, packageAddress_, limits,
        [this](const QByteArray& bytes, std::uint64_t announced) { return takeChunk(bytes, announced); },
        [this](const Fetch::Result& result) { packageArrived(result); });
}

bool UpdateCheck::takeChunk(const QByteArray& bytes, std::uint64_t announced) {
    if (announced > settings_.packageLimits.bytes || (item_.length && announced != 0 && announced != *item_.length)) {
        return false;
    }
    if (const auto error = package_->write(bytes.constData(), static_cast<std::size_t>(bytes.size()))) {
        storageError_ = *error;
        return false;
    }
    received_ += static_cast<std::uint64_t>(bytes.size());
    view_.showDownload(received_, item_.length.value_or(announced));
    return true;
}

void UpdateCheck::packageArrived(const Fetch::Result& result) {
    if (!storageError_.empty()) {
        fail(UpdateErrorCode::NoPlaceToStore, storageError_);
        return;
    }
    if (!result.error.empty() || result.status != httpOK) {
        fail(UpdateErrorCode::DownloadFailed,
             result.error.empty() ? "the server answers with status " + std::to_string(result.status) : result.error);
        return;
    }
    if (received_ == 0 || (item_.length && received_ != *item_.length)) {
        fail(UpdateErrorCode::DownloadFailed, "the package came incomplete");
        return;
    }
    view_.showVerifying();
    if (!key_->hasSigned(package_->descriptor(), item_.signature)) {
        fail(UpdateErrorCode::NotSigned, "the package does not carry the signature of the configured key");
        return;
    }
    inspect();
}

// A signature says who made a package, not which version it is: the feed could offer an old one under a new number.
void UpdateCheck::inspect() {
    run({"dpkg-deb", "--field", package_->path(), "Package", "Version"}, [this](const auto& fields) {
        if (!fields) {
            fail(UpdateErrorCode::NotSigned, "the package can't be read as a Debian package");
        } else {
            inspected(*fields);
        }
    });
}

void UpdateCheck::inspected(const std::string& fields) {
    const std::string version = upstreamVersion(field(fields, "Version"));
    if (field(fields, "Package") != packageName) {
        fail(UpdateErrorCode::NotSigned, "the package is another program's");
    } else if (std::is_neq(compareVersions(version, item_.version)) ||
               std::is_lteq(compareVersions(version, settings_.version))) {
        fail(UpdateErrorCode::NotSigned, "the package is of version " + version + ", not " + item_.version);
    } else {
        handOver();
    }
}

void UpdateCheck::handOver() {
    package_->keep();
    const auto tell = [this, told = std::make_shared<bool>(false)](bool taken) {
        if (std::exchange(*told, true)) {
            return;
        }
        if (taken) {
            view_.showHandedOver();
        } else {
            fail(UpdateErrorCode::InstallationFailed, package_->path());
        }
    };
    const auto ended = lifetime_.guard([tell](ChildExit exit) { tell(exit.isSuccess()); });
    if (startProgram({"xdg-open", package_->path()}, ended) != 0) {
        tell(false);
        return;
    }
    QTimer::singleShot(handOverLimit, qApp, lifetime_.guard([tell] { tell(true); }));
}

void UpdateCheck::run(const std::vector<std::string>& words,
                      std::function<void(const std::optional<std::string>&)> done) {
    process_ = std::make_unique<QProcess>();
    QProcess* process = process_.get();
    const auto once = [this, done = std::move(done),
                       told = std::make_shared<bool>(false)](const std::optional<std::string>& output) {
        if (!std::exchange(*told, true)) {
            // The process stands in its own signal.
            QTimer::singleShot(0, qApp, lifetime_.guard([done, output] { done(output); }));
        }
    };
    QObject::connect(process, &QProcess::finished, process, [process, once](int code, QProcess::ExitStatus how) {
        const bool good = how == QProcess::NormalExit && code == 0;
        once(good ? std::optional(process->readAllStandardOutput().toStdString()) : std::nullopt);
    });
    QObject::connect(process, &QProcess::errorOccurred, process,
                     [once](QProcess::ProcessError) { once(std::nullopt); });
    QTimer::singleShot(inspectionLimit, process, [process] { process->kill(); });
    QStringList arguments;
    for (std::size_t i = 1; i < words.size(); ++i) {
        arguments << QString::fromStdString(words[i]);
    }
    process->setStandardInputFile(QProcess::nullDevice());
    process->start(QString::fromStdString(words.front()), arguments);
}

void UpdateCheck::fail(UpdateErrorCode code, const std::string& detail) {
    if (code != UpdateErrorCode::InstallationFailed) {
        package_.reset();
    }
    view_.showProblem(problemOf(code), detail);
    failed_(code, detail);
}

} // namespace rb
