#include "tests/session/frame/EventLog.h"

#include "tests/session/frame/Wait.h"

#include <algorithm>
#include <poll.h>
#include <stdexcept>
#include <xcb/screensaver.h>

namespace rb {

EventLog::EventLog(const std::string& display)
    : x_(display) {
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(x_.connection(), x_.root(), XCB_CW_EVENT_MASK, &mask);
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x_.connection(), &xcb_screensaver_id);
    if (extension == nullptr || extension->present == 0) {
        throw std::runtime_error("the X server has no screen saver");
    }
    screenSaverEvent_ = extension->first_event;
    xcb_screensaver_select_input(x_.connection(), x_.root(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
    x_.sync();
}

const std::vector<SessionEvent>& EventLog::events() {
    while (const auto event = ownReply(xcb_poll_for_event(x_.connection()))) {
        take(*event);
    }
    return events_;
}

void EventLog::take(const xcb_generic_event_t& event) {
    SessionEvent entry;
    entry.time = monotonicNow();
    const auto type = static_cast<std::uint8_t>(event.response_type & 0x7f);
    if (type == XCB_MAP_NOTIFY) {
        const auto window = reinterpret_cast<const xcb_map_notify_event_t&>(event).window;
        entry.window = x_.facts(window).value_or(WindowFacts{.window = window});
    } else if (type == XCB_UNMAP_NOTIFY) {
        entry.kind = SessionEventKind::Unmapped;
        entry.window.window = reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window;
    } else if (type == screenSaverEvent_) {
        const auto& notify = reinterpret_cast<const xcb_screensaver_notify_event_t&>(event);
        entry.kind = notify.state == XCB_SCREENSAVER_STATE_OFF ? SessionEventKind::SaverOff : SessionEventKind::SaverOn;
    } else {
        return;
    }
    events_.push_back(std::move(entry));
}

std::optional<SessionEvent> EventLog::waitFor(const std::function<bool(const SessionEvent&)>& wanted, double limit) {
    const double end = monotonicNow() + limit;
    while (true) {
        const auto& all = events();
        const auto found = std::find_if(all.begin(), all.end(), wanted);
        if (found != all.end()) {
            return *found;
        }
        const double left = end - monotonicNow();
        if (left <= 0) {
            return std::nullopt;
        }
        pollfd descriptor{xcb_get_file_descriptor(x_.connection()), POLLIN, 0};
        ::poll(&descriptor, 1, static_cast<int>(left * 1000) + 1);
    }
}

std::size_t EventLog::count(const std::function<bool(const SessionEvent&)>& wanted) {
    const auto& all = events();
    return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), wanted));
}

} // namespace rb
