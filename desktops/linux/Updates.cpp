#include "desktops/linux/Updates.h"

#include "desktops/linux/UpdateHelper.h"
#include "platform/Appearance.h"
#include "platform/Application.h"
#include "platform/Log.h"


#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace rb {

namespace {

// "failed 1002 what happened" is the last line of a run that ends with an error.
std::optional<UpdateError> readError(const std::string& output) {
    constexpr std::string_view word = "failed ";
    std::size_t start = output.rfind("\nfailed ");
    start = start == std::string::npos ? 0 : start + 1;
    if (output.compare(start, word.size(), word) != 0) {
        return std::nullopt;
    }
    UpdateError error{.domain = UpdateError::frameworkDomain};
    for (std::size_t i = start + word.size(); i < output.size() && output[i] >= '0' && output[i] <= '9'; ++i) {
        error.code = error.code % 100000 * 10 + (output[i] - '0');
    }
    return error;
}

class LinuxUpdater final : public Updater {
public:
    LinuxUpdater(UpdaterDelegate& delegate, const Application& application, const Appearance& appearance, Log& log)
        : delegate_(delegate)
        , application_(application)
        , appearance_(appearance)
        , log_(log) {}

    void checkForUpdates() override {
        if (helper_) {
            helper_->tell("activate\n");
            return;
        }
        const auto named = delegate_.feedURLStringForUpdater();
        const auto feed = named ? named : application_.infoString("SUFeedURL");
        const auto text = [](const std::string& utf8) { return QString::fromStdString(utf8); };
        output_.clear();
        helper_ = std::make_unique<UpdateHelper>(
            QStringList{QStringLiteral("check"), QStringLiteral("--feed"), text(feed.value_or("")),
                        QStringLiteral("--key"), text(application_.infoString("SUPublicEDKey").value_or("")),
                        QStringLiteral("--version"), QStringLiteral(ROOKBAY_VERSION), QStringLiteral("--appearance"),
                        appearance_.isDark() ? QStringLiteral("dark") : QStringLiteral("light")},
            [this](const QByteArray& bytes) { output_.append(bytes.constData(), static_cast<std::size_t>(bytes.size())); },
            [this](int code) { finish(code); });
    }

private:
    void finish(int code) {
        auto error = readError(output_);
        if (code < 0) {
            log_.write("the update helper could not be started or crashed");
            // Not a matter of the feed.
            error = UpdateError{.domain = "RookBayUpdateHelper", .code = code};
        } else if (error) {
            log_.write("update check: " + output_.substr(output_.rfind("failed "), output_.size() - 1));
        }
        helper_.reset();
        delegate_.updaterDidFinishUpdateCycle(error);
    }

    UpdaterDelegate& delegate_;
    const Application& application_;
    const Appearance& appearance_;
    Log& log_;
    std::string output_;
    std::unique_ptr<UpdateHelper> helper_; // while a check is under way
};

} // namespace

std::unique_ptr<Updater> LinuxUpdates::startUpdater(UpdaterDelegate& delegate) {
    if (updateHelperPath().isEmpty()) {
        log_.write("updates are configured, but rookbay-update isn't installed");
        return nullptr;
    }
    return std::make_unique<LinuxUpdater>(delegate, application_, appearance_, log_);
}

} // namespace rb
