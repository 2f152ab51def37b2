#pragma once

#include "platform/URLSessions.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace rb {

class VirtualRunLoop;

// A network in memory: each address answers after its time, or never, which ends with the request's time-out.
class VirtualURLSessions final : public URLSessions {
public:
    struct Server {
        double delay = 0; // seconds
        URLAnswer answer = {.failed = true};
    };

    explicit VirtualURLSessions(VirtualRunLoop& loop)
        : loop_(loop) {}

    std::unique_ptr<URLSession> createEphemeralSession(const URLSessionSpec& spec) override;

    // Addresses without a server are no valid addresses.
    void setServer(const std::string& url, const Server& server) { servers_[url] = server; }
    // The addresses that were asked, in order.
    const std::vector<std::string>& requests() const { return requests_; }
    std::size_t sessions() const { return sessions_; }
    // Sessions that are still there.
    std::size_t live() const { return live_; }
    std::optional<double> lastTimeout() const { return lastTimeout_; }

private:
    class Session;

    VirtualRunLoop& loop_;
    std::map<std::string, Server> servers_;
    std::vector<std::string> requests_;
    std::size_t sessions_ = 0;
    std::size_t live_ = 0;
    std::optional<double> lastTimeout_;
};

} // namespace rb
