#include "desktops/virtual/URLSessions.h"

#include "desktops/virtual/RunLoop.h"

#include <utility>

namespace rb {

class VirtualURLSessions::Session final : public URLSession {
public:
    Session(VirtualURLSessions& owner, double timeout)
        : owner_(owner)
        , timeout_(timeout)
        , calls_(owner.loop_) {
        ++owner_.live_;
    }
    ~Session() override { --owner_.live_; }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    bool startDataTask(const std::string& url, std::function<void(const URLAnswer&)> done) override {
        owner_.loop_.requireMainThread("URLSession::startDataTask");
        const auto found = owner_.servers_.find(url);
        if (found == owner_.servers_.end()) {
            return false;
        }
        owner_.requests_.push_back(url);
        Server server = found->second;
        if (server.delay > timeout_) {
            server = {.delay = timeout_, .answer = {.failed = true}};
        }
        calls_.after(server.delay, [done = std::move(done), answer = server.answer] { done(answer); });
        return true;
    }

private:
    VirtualURLSessions& owner_;
    double timeout_;
    DelayedCalls calls_;
};

std::unique_ptr<URLSession> VirtualURLSessions::createEphemeralSession(const URLSessionSpec& spec) {
    loop_.requireMainThread("URLSessions::createEphemeralSession");
    ++sessions_;
    lastTimeout_ = spec.requestTimeout;
    return std::make_unique<Session>(*this, spec.requestTimeout);
}

} // namespace rb
