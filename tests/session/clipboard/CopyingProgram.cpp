#include "tests/session/clipboard/CopyingProgram.h"

#include <algorithm>
#include <poll.h>
#include <utility>

namespace rb {

CopyingProgram::CopyingProgram(const std::string& display, Manners manners)
    : x_(display)
    , manners_(std::move(manners))
    , window_(xcb_generate_id(x_.connection()))
    , clipboard_(x_.atom("CLIPBOARD")) {
    xcb_create_window(x_.connection(), XCB_COPY_FROM_PARENT, window_, x_.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    for (const char* name : {"TARGETS", "INCR"}) {
        names_[x_.atom(name)] = name;
    }
    targets_.push_back(x_.atom("TARGETS"));
    for (int number = 0; number < manners_.furtherTargets; ++number) {
        targets_.push_back(x_.atom("application/x-further-" + std::to_string(number)));
    }
    asked_["TARGETS"] = 0;
    for (const auto& [target, contents] : manners_.offered) {
        targets_.push_back(x_.atom(target));
        names_[targets_.back()] = target;
        asked_[target] = 0;
    }
    copyAgain();
    thread_ = std::thread([this] { run(); });
}

CopyingProgram::~CopyingProgram() {
    ends_ = true;
    thread_.join();
}

void CopyingProgram::copyAgain() {
    xcb_set_selection_owner(x_.connection(), window_, clipboard_, XCB_CURRENT_TIME);
    xcb_flush(x_.connection());
}

int CopyingProgram::asked(const std::string& target) const {
    return asked_.at(target);
}

void CopyingProgram::run() {
    while (!ends_) {
        const auto event = ownReply(xcb_poll_for_event(x_.connection()));
        if (!event) {
            pollfd waiting{.fd = xcb_get_file_descriptor(x_.connection()), .events = POLLIN, .revents = 0};
            ::poll(&waiting, 1, 10);
            continue;
        }
        const int type = event->response_type & 0x7F;
        if (type == XCB_SELECTION_REQUEST) {
            answer(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
        } else if (type == XCB_PROPERTY_NOTIFY) {
            send(reinterpret_cast<const xcb_property_notify_event_t&>(*event));
        }
    }
}

void CopyingProgram::answer(const xcb_selection_request_event_t& request) {
    xcb_connection_t* x = x_.connection();
    const auto name = names_.find(request.target);
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    if (name != names_.end() && asked_.contains(name->second)) {
        ++asked_[name->second];
        const bool targets = name->second == "TARGETS";
        if (!(targets ? manners_.answersTargets : manners_.answersContents)) {
            return;
        }
        notify.property = request.property;
        if (targets) {
            xcb_change_property(x, XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_ATOM, 32,
                                static_cast<std::uint32_t>(targets_.size()), targets_.data());
        } else if (const std::string& contents = manners_.offered.at(name->second); manners_.pieceSize == 0) {
            xcb_change_property(x, XCB_PROP_MODE_REPLACE, request.requestor, request.property, request.target, 8,
                                static_cast<std::uint32_t>(contents.size()), contents.data());
        } else {
            const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(x, request.requestor, XCB_CW_EVENT_MASK, &events);
            xcb_change_property(x, XCB_PROP_MODE_REPLACE, request.requestor, request.property, x_.atom("INCR"), 32, 1,
                                &manners_.promisedSize);
            sendings_.push_back({request.requestor, request.property, request.target, contents});
        }
    }
    xcb_send_event(x, 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
    xcb_flush(x);
}

void CopyingProgram::send(const xcb_property_notify_event_t& notify) {
    const auto found = std::find_if(sendings_.begin(), sendings_.end(), [&](const Sending& each) {
        return each.window == notify.window && each.property == notify.atom;
    });
    if (notify.state != XCB_PROPERTY_DELETE || found == sendings_.end() || found->pieces++ >= manners_.mostPieces) {
        return;
    }
    const std::string piece = found->bytes.substr(std::min(found->sent, found->bytes.size()), manners_.pieceSize);
    xcb_change_property(x_.connection(), XCB_PROP_MODE_REPLACE, found->window, found->property, found->type, 8,
                        static_cast<std::uint32_t>(piece.size()), piece.data());
    xcb_flush(x_.connection());
    found->sent += piece.size();
    if (piece.empty()) {
        sendings_.erase(found);
    }
}

} // namespace rb
