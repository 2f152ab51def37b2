#pragma once

#include <QHash>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace rb {

// A web server on this machine whose answers a test writes byte by byte.
class FeedServer final : public QTcpServer {
public:
    using Act = std::function<void(QTcpSocket& connection)>;

    FeedServer() {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* connection = nextPendingConnection()) {
                connect(connection, &QTcpSocket::disconnected, connection, &QObject::deleteLater);
                connect(connection, &QTcpSocket::readyRead, this, [this, connection] { answer(*connection); });
            }
        });
    }

    std::string address(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(serverPort()) + path;
    }
    // From now on this is what the path gets.
    void on(const std::string& path, Act act) { acts_[path] = std::move(act); }
    void serve(const std::string& path, const std::string& body, const std::string& status = "200 OK") {
        on(path, [body, status](QTcpSocket& connection) {
            connection.write(head(status, body.size()).c_str());
            connection.write(body.data(), static_cast<qint64>(body.size()));
            connection.disconnectFromHost();
        });
    }
    void redirect(const std::string& path, const std::string& target) {
        on(path, [target](QTcpSocket& connection) {
            connection.write(("HTTP/1.1 302 Found\r\nLocation: " + target + "\r\nContent-Length: 0\r\n\r\n").c_str());
            connection.disconnectFromHost();
        });
    }
    static std::string head(const std::string& status, std::uint64_t length) {
        return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(length) + "\r\nConnection: close\r\n\r\n";
    }
    int requests(const std::string& path) const {
        const auto found = counts_.find(path);
        return found == counts_.end() ? 0 : found->second;
    }
    const std::string& lastRequest() const { return lastRequest_; }

private:
    void answer(QTcpSocket& connection) {
        const std::string request = connection.readAll().toStdString();
        const std::size_t start = request.find(' ') + 1;
        const std::string path = request.substr(start, request.find(' ', start) - start);
        lastRequest_ = request;
        ++counts_[path];
        const auto act = acts_.find(path);
        if (act != acts_.end()) {
            act->second(connection);
        } else {
            connection.write(head("404 Not Found", 0).c_str());
            connection.disconnectFromHost();
        }
    }

    std::map<std::string, Act> acts_;
    std::map<std::string, int> counts_;
    std::string lastRequest_;
};

} // namespace rb
