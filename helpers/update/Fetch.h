#pragma once

#include <QNetworkRequest>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <string>

class QNetworkAccessManager;
class QNetworkReply;

namespace rb {

struct FetchLimits {
    double silence = 15; // seconds without any news
    double whole = 60;   // seconds altogether; 0 for no limit
    std::uint64_t bytes = std::uint64_t{4} << 20;
    int redirects = 5;
};

// One answer being fetched, redirects followed within the rules of Address.h, nothing kept and nothing sent but the
// question. Destruction ends it without a word. Main thread only.
class Fetch final : public QObject {
public:
    struct Result {
        std::string error = {}; // empty when the answer came whole
        int status = 0;         // of HTTP
        QUrl address = {};      // where it came from in the end
    };
    // `chunk` is told of the body as it comes; it answers false to end the fetch with an error. `expected` is the
    // length that the server announces, 0 when it doesn't.
    using Chunk = std::function<bool(const QByteArray& bytes, std::uint64_t expected)>;
    using Done = std::function<void(const Result& result)>;

    // The address must be an allowed one. `done` is told once, in a later turn.
    Fetch(QNetworkAccessManager& network, const QUrl& address, const FetchLimits& limits, Chunk chunk, Done done);
    ~Fetch() override;
    Fetch(const Fetch&) = delete;
    Fetch& operator=(const Fetch&) = delete;

private:
    void request(const QUrl& address);
    void read();
    void finished();
    void finish(const std::string& error);

    QNetworkAccessManager& network_;
    FetchLimits limits_;
    Chunk chunk_;
    Done done_;
    QNetworkReply* reply_ = nullptr;
    QTimer silence_;
    QTimer whole_;
    int redirects_ = 0;
    std::uint64_t received_ = 0;
};

} // namespace rb
