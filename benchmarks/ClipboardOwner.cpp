#include "benchmarks/ClipboardOwner.h"

#include "tests/session/frame/Wait.h"

#include <algorithm>
#include <poll.h>

namespace rb {

namespace {

constexpr std::size_t largestPiece = 262'144; // bytes, as toolkits have it

} // namespace

ClipboardOwner::ClipboardOwner(const std::string& display)
    : x_(display)
    , window_(xcb_generate_id(x_.connection()))
    , clipboard_(x_.atom("CLIPBOARD"))
    , targets_(x_.atom("TARGETS"))
    , incremental_(x_.atom("INCR")) {
    xcb_create_window(x_.connection(), XCB_COPY_FROM_PARENT, window_, x_.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
}

ClipboardOwner::~ClipboardOwner() = default;

void ClipboardOwner::copy(const std::map<std::string, std::string>& contents) {
    givings_.clear();
    contents_.clear();
    for (const auto& [target, bytes] : contents) {
        contents_[x_.atom(target)] = bytes;
    }
    takenAt_.reset();
    const xcb_timestamp_t time = x_.serverTime();
    copiedAt_ = monotonicNow();
    xcb_set_selection_owner(x_.connection(), window_, clipboard_, time);
    xcb_flush(x_.connection());
}

bool ClipboardOwner::serveUntilTaken(double limit) {
    const double end = monotonicNow() + limit;
    while (!takenAt_ && step(end)) {}
    return takenAt_.has_value();
}

void ClipboardOwner::serve(double seconds) {
    const double end = monotonicNow() + seconds;
    while (step(end)) {}
}

// Deals with what has come in, or waits for more; false when the time is over.
bool ClipboardOwner::step(double until) {
    while (const auto event = ownReply(xcb_poll_for_event(x_.connection()))) {
        handle(*event);
    }
    const double left = until - monotonicNow();
    if (left <= 0) {
        return false;
    }
    pollfd waiting{.fd = xcb_get_file_descriptor(x_.connection()), .events = POLLIN, .revents = 0};
    constexpr double longest = 0.05;
    ::poll(&waiting, 1, static_cast<int>(std::min(left, longest) * 1000) + 1);
    return true;
}

void ClipboardOwner::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == XCB_SELECTION_REQUEST) {
        answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.state == XCB_PROPERTY_DELETE) {
            deleted(notify, event.full_sequence);
        }
    }
}

void ClipboardOwner::answer(const xcb_selection_request_event_t& request) {
    xcb_connection_t* x = x_.connection();
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = request.property;
    // Asked anew in the same place: what was given up there must not come in between.
    std::erase_if(givings_, [&](const Giving& each) {
        return each.window == request.requestor && each.property == request.property;
    });
    const auto found = contents_.find(request.target);
    if (request.target == targets_) {
        std::vector<xcb_atom_t> targets{request.target};
        for (const auto& [target, bytes] : contents_) {
            targets.push_back(target);
        }
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_ATOM, 32,
                            static_cast<std::uint32_t>(targets.size()), targets.data());
    } else if (found != contents_.end()) {
        // The deletion tells that it was read.
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(x, request.requestor, XCB_CW_EVENT_MASK, &events);
        const std::string& bytes = found->second;
        const bool inPieces = bytes.size() > largestPiece;
        const auto size = static_cast<std::uint32_t>(bytes.size());
        const auto cookie = inPieces ? xcb_change_property(x, XCB_PROP_MODE_REPLACE, request.requestor,
                                                           request.property, incremental_, 32, 1, &size)
                                     : xcb_change_property(x, XCB_PROP_MODE_REPLACE, request.requestor,
                                                           request.property, request.target, 8, size, bytes.data());
        givings_.push_back({.window = request.requestor,
                            .property = request.property,
                            .type = request.target,
                            .bytes = &bytes,
                            .inPieces = inPieces,
                            .written = cookie.sequence});
    } else {
        notify.property = XCB_ATOM_NONE;
    }
    xcb_send_event(x, 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
    xcb_flush(x);
}

void ClipboardOwner::deleted(const xcb_property_notify_event_t& notify, std::uint32_t sequence) {
    const auto found = std::find_if(givings_.begin(), givings_.end(), [&](const Giving& each) {
        return each.window == notify.window && each.property == notify.atom;
    });
    // Programs may take away an earlier answer in the same place only after they have asked for this one.
    if (found == givings_.end() || static_cast<std::int32_t>(sequence - found->written) < 0) {
        return;
    }
    if (!found->inPieces || found->sent > found->bytes->size()) {
        givings_.erase(found);
        takenAt_ = takenAt_.value_or(monotonicNow());
        return;
    }
    const std::size_t length = std::min(largestPiece, found->bytes->size() - found->sent);
    const auto cookie =
        xcb_change_property(x_.connection(), XCB_PROP_MODE_REPLACE, found->window, found->property, found->type, 8,
                            static_cast<std::uint32_t>(length), found->bytes->data() + found->sent);
    xcb_flush(x_.connection());
    found->written = cookie.sequence;
    found->sent += length > 0 ? length : 1; // past the end once the empty piece is out
}

} // namespace rb
