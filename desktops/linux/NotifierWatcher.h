#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace rb {

// Where an item of another program is on the session bus.
struct NotifierAddress {
    QString service;
    QString path;
    friend bool operator==(const NotifierAddress&, const NotifierAddress&) = default;
};

// The session's StatusNotifierWatcher, with which programs register their items. It lives in a thread and on a bus
// connection of its own: programs wait for its answers, which therefore never wait for our main thread. A watcher that
// replaces it may do so. The callbacks come on the main thread, where it is made and ends.
class NotifierWatcher {
public:
    struct Listener {
        // Before the name is asked for: the unique name of the connection.
        std::function<void(const QString& connection)> begins;
        std::function<void(const NotifierAddress& item)> registered;
        std::function<void(const NotifierAddress& item)> gone;
    };
    static constexpr qsizetype mostItems = 64;

    explicit NotifierWatcher(Listener listener);
    // Gives the name back and waits for the thread.
    ~NotifierWatcher();
    NotifierWatcher(const NotifierWatcher&) = delete;
    NotifierWatcher& operator=(const NotifierWatcher&) = delete;

private:
    class Thread;

    std::unique_ptr<Thread> thread_;
};

} // namespace rb
