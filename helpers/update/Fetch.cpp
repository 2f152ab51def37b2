#include "helpers/update/Fetch.h"

#include "helpers/update/Address.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <utility>

namespace rb {

namespace {

constexpr qint64 bufferSize = qint64{256} * 1024; // bytes that wait to be read

int milliseconds(double seconds) {
    return static_cast<int>(seconds * 1000);
}

} // namespace

Fetch::Fetch(QNetworkAccessManager& network, const QUrl& address, const FetchLimits& limits, Chunk chunk, Done done)
    : network_(network)
    , limits_(limits)
    , chunk_(std::move(chunk))
    , done_(std::move(done)) {
    silence_.setSingleShot(true);
    silence_.setTimerType(Qt::PreciseTimer);
    whole_.setSingleShot(true);
    connect(&silence_, &QTimer::timeout, this, [this] { finish("the server does not answer"); });
    connect(&whole_, &QTimer::timeout, this, [this] { finish("it takes too long"); });
    if (limits_.whole > 0) {
        whole_.start(milliseconds(limits_.whole));
    }
    request(address);
}

Fetch::~Fetch() {
    if (reply_ != nullptr) {
        reply_->disconnect(this);
        reply_->abort();
        reply_->deleteLater();
    }
}

void Fetch::request(const QUrl& address) {
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setRawHeader("User-Agent", "RookBay/" ROOKBAY_VERSION);
    request.setRawHeader("Cache-Control", "no-cache");
    // Lengths are compared, and nothing unpacks to more than was sent.
    request.setRawHeader("Accept-Encoding", "identity");
    reply_ = network_.get(request);
    reply_->setReadBufferSize(bufferSize);
    silence_.start(milliseconds(limits_.silence));
    connect(reply_, &QNetworkReply::metaDataChanged, this, [this] { silence_.start(milliseconds(limits_.silence)); });
    connect(reply_, &QNetworkReply::readyRead, this, [this] { read(); });
    connect(reply_, &QNetworkReply::finished, this, [this] { finished(); });
}

void Fetch::read() {
    silence_.start(milliseconds(limits_.silence));
    const int status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray bytes = reply_->readAll();
    received_ += static_cast<std::uint64_t>(bytes.size());
    if (received_ > limits_.bytes) {
        finish("the answer is too long");
        return;
    }
    if (status >= 300 && status < 400) {
        return; // what is said beside a redirect is no answer
    }
    const qint64 announced = reply_->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (!bytes.isEmpty() && !chunk_(bytes, announced > 0 ? static_cast<std::uint64_t>(announced) : 0)) {
        finish("the answer could not be taken");
    }
}

void Fetch::finished() {
    if (reply_->bytesAvailable() > 0) {
        read();
    }
    if (reply_ == nullptr) {
        return; // that was too much
    }
    const int status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QUrl target = reply_->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (status >= 300 && status < 400 && !target.isEmpty()) {
        const auto next = allowedRedirect(reply_->url(), target);
        if (!next) {
            finish("the server sends on to an address that isn't secure");
            return;
        }
        if (++redirects_ > limits_.redirects) {
            finish("the server sends on and on");
            return;
        }
        reply_->disconnect(this);
        reply_->deleteLater();
        received_ = 0;
        request(*next);
        return;
    }
    // An answer of the server, whatever its status, is an answer; anything else broke off.
    const bool answered =
        status != 0 && reply_->error() != QNetworkReply::RemoteHostClosedError &&
        (reply_->error() == QNetworkReply::NoError || reply_->error() >= QNetworkReply::ContentAccessDenied);
    finish(answered ? std::string() : reply_->errorString().toStdString());
}

void Fetch::finish(const std::string& error) {
    silence_.stop();
    whole_.stop();
    const Result result{.error = error,
                        .status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                        .address = reply_->url()};
    reply_->disconnect(this);
    reply_->abort();
    reply_->deleteLater();
    reply_ = nullptr;
    // In a turn of its own, because it may destroy this.
    QTimer::singleShot(0, this, [done = std::move(done_), result] {
        const Done last = done;
        last(result);
    });
}

} // namespace rb
