#include "helpers/update/Address.h"

#include <QHostAddress>

namespace rb {

namespace {

bool isThisMachine(const QString& host) {
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

bool isSecure(const QUrl& url) {
    return url.scheme() == QLatin1String("https");
}

} // namespace

std::optional<QUrl> allowedAddress(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty()) {
        return std::nullopt;
    }
    if (isSecure(url) || (url.scheme() == QLatin1String("http") && isThisMachine(url.host()))) {
        return url;
    }
    return std::nullopt;
}

std::optional<QUrl> allowedAddress(const std::string& text) {
    return allowedAddress(QUrl(QString::fromStdString(text), QUrl::StrictMode));
}

std::optional<QUrl> allowedRedirect(const QUrl& from, const QUrl& to) {
    const QUrl target = from.resolved(to);
    return isSecure(from) && !isSecure(target) ? std::nullopt : allowedAddress(target);
}

} // namespace rb
