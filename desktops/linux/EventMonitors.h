#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/EventMonitors.h"

#include <cstdint>
#include <functional>
#include <map>

namespace rb {

// Mouse events anywhere as the raw events of the X input extension, which arrive also while another program drags or
// holds the pointer. Only the kinds that somebody asks for are selected, so nothing wakes the program for the others.
class LinuxEventMonitors final : public EventMonitors {
public:
    explicit LinuxEventMonitors(XConnection& connection)
        : connection_(connection) {}
    LinuxEventMonitors(const LinuxEventMonitors&) = delete;
    LinuxEventMonitors& operator=(const LinuxEventMonitors&) = delete;

    Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    Handle onNextInput(std::function<void()> happened) override;

private:
    struct Monitor {
        std::uint64_t mask = 0;
        bool local = false;
        std::function<void()> happened;
    };

    Handle add(Monitor monitor);
    // False when the server has no such events.
    bool selectEvents();
    void tellOfInput();
    void handle(const xcb_generic_event_t& event);

    XConnection& connection_;
    std::map<std::uint64_t, Monitor> monitors_;
    std::map<std::uint64_t, std::function<void()>> awaitingInput_;
    std::uint64_t next_ = 0;
    std::uint8_t inputOpcode_ = 0;
    Lifetime lifetime_;
    Handle events_;
};

} // namespace rb
