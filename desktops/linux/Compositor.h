#pragma once

#include "platform/Handle.h"

#include <cstdint>
#include <functional>

namespace rb {

class XConnection;

// Whether the session has a compositor, which is what makes windows translucent. It may come and go at any time; it
// is the owner of a selection, and the server tells when that changes. Main thread only.
class Compositor {
public:
    // Asks nothing before the first question. Without a connection there is always one.
    explicit Compositor(XConnection* connection)
        : connection_(connection) {}
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

    bool isRunning();
    // The one listener, told after every change.
    void setListener(std::function<void()> changed) { changed_ = std::move(changed); }

private:
    void watch();

    XConnection* connection_;
    bool watched_ = false;
    bool running_ = true;
    std::function<void()> changed_;
    Handle events_;
};

} // namespace rb
