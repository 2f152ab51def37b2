#include "desktops/linux/URLSessions.h"

#include "desktops/linux/UpdateHelper.h"
#include "desktops/linux/Utf8.h"

#include <QUrl>

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace rb {

namespace {

// What the helper prints: "HTTP 200", an end of line, the body. Exit code 0 means that the body is whole.
URLAnswer readAnswer(int code, const std::string& output) {
    constexpr std::string_view word = "HTTP ";
    const std::size_t end = output.find('\n');
    if (code != 0 || end == std::string::npos || !output.starts_with(word)) {
        return {.failed = true};
    }
    URLAnswer answer;
    for (const char c : output.substr(word.size(), end - word.size())) {
        if (c < '0' || c > '9' || answer.status > 999) {
            return {.failed = true};
        }
        answer.status = answer.status * 10 + (c - '0');
    }
    std::string body = output.substr(end + 1);
    if (isValidUtf8(body)) {
        answer.text = std::move(body);
    }
    return answer;
}

class LinuxURLSession final : public URLSession {
public:
    explicit LinuxURLSession(double timeout)
        : timeout_(timeout) {}

    bool startDataTask(const std::string& address, std::function<void(const URLAnswer&)> done) override {
        const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
        if (!url.isValid() || url.host().isEmpty()) {
            return false;
        }
        const auto output = std::make_shared<std::string>();
        tasks_.push_back(std::make_unique<UpdateHelper>(
            QStringList{QStringLiteral("probe"), QStringLiteral("--timeout"), QString::number(timeout_),
                        QString::fromStdString(address)},
            [output](const QByteArray& bytes) { output->append(bytes.constData(), static_cast<std::size_t>(bytes.size())); },
            [output, done = std::move(done)](int code) { done(readAnswer(code, *output)); }));
        return true;
    }

private:
    double timeout_; // seconds
    std::vector<std::unique_ptr<UpdateHelper>> tasks_;
};

} // namespace

std::unique_ptr<URLSession> LinuxURLSessions::createEphemeralSession(const URLSessionSpec& spec) {
    return std::make_unique<LinuxURLSession>(spec.requestTimeout);
}

} // namespace rb
