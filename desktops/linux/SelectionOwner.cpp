#include "desktops/linux/SelectionOwner.h"

#include "desktops/linux/XConnection.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <poll.h>
#include <utility>

namespace rb {

namespace {

constexpr std::size_t largestPiece = 262'144; // bytes; servers take requests of at least this size
constexpr double sendingLimit = 10;           // seconds in which the other program must take a piece
constexpr double makingLimit = 15;            // seconds that a request waits for something being made
constexpr std::size_t mostWaiting = 256;      // requests; beyond is no paste any more
constexpr double handOverLimit = 2;           // seconds that quitting may take longer
constexpr double lastMakingLimit = 1.5;       // of them, those that a manager waits for something being made
constexpr double signOfLifeLimit = 0.3;       // seconds in which a manager asks for something
constexpr const char* savedProperty = "ROOKBAY_SAVE_TARGETS";

} // namespace

SelectionOwner::SelectionOwner(XConnection& connection, RunLoop& loop, std::string selection)
    : connection_(connection)
    , loop_(loop)
    , selection_(std::move(selection)) {}

SelectionOwner::~SelectionOwner() {
    if (window_ != XCB_WINDOW_NONE) {
        xcb_destroy_window(connection_.get(), window_);
        xcb_flush(connection_.get());
    }
}

void SelectionOwner::prepare() {
    if (window_ != XCB_WINDOW_NONE) {
        return;
    }
    window_ = xcb_generate_id(connection_.get());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
}

bool SelectionOwner::take(std::vector<SelectionForm> forms) {
    prepare();
    const xcb_atom_t selection = connection_.atom(selection_);
    time_ = connection_.serverTime();
    xcb_set_selection_owner(connection_.get(), window_, selection, time_);
    const auto cookie = xcb_get_selection_owner(connection_.get(), selection);
    const XReply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
    connection_.deliverQueuedEvents();
    if (!reply || reply->owner != window_) {
        return false;
    }
    forms_ = std::make_shared<std::vector<SelectionForm>>(std::move(forms));
    return true;
}

std::vector<xcb_atom_t> SelectionOwner::targets(const Forms& forms) const {
    std::vector<xcb_atom_t> atoms;
    for (const char* name : {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS"}) {
        atoms.push_back(connection_.atom(name));
    }
    for (const SelectionForm& form : *forms) {
        if (!form.made || !form.made->isBroken()) {
            atoms.push_back(connection_.atom(form.target));
        }
    }
    return atoms;
}

void SelectionOwner::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_SELECTION_REQUEST: {
        const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
        lastAsked_ = loop_.now();
        dropSendings(request.requestor, request.property);
        answer(request);
        break;
    }
    case XCB_SELECTION_CLEAR: {
        const auto& clear = reinterpret_cast<const xcb_selection_clear_event_t&>(event);
        // Not one that was under way when we took the selection again.
        if (clear.owner == window_ && clear.selection == connection_.atom(selection_) && clear.time >= time_) {
            forms_ = nullptr; // who has asked before is still answered
        }
        break;
    }
    case XCB_SELECTION_NOTIFY: {
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        handedOver_ = handedOver_ || (notify.requestor == window_ && notify.target == connection_.atom("SAVE_TARGETS"));
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.state == XCB_PROPERTY_DELETE) {
            lastAsked_ = loop_.now(); // a piece was taken, or the list of what is to be saved
        }
        sendPiece(notify, event.full_sequence);
        break;
    }
    default:
        break;
    }
}

void SelectionOwner::answer(const xcb_selection_request_event_t& request) {
    if (request.owner != window_) {
        return;
    }
    Waiting asked{.request = request, .forms = forms_};
    if (forms_ && request.selection == connection_.atom(selection_)) {
        asked.conversions = conversionsOf(request);
    }
    const auto pending = pendingOf(asked);
    if (pending.empty() || waiting_.size() >= mostWaiting) {
        answerNow(std::move(asked));
    } else {
        wait(std::move(asked), pending);
    }
}

SelectionOwner::Conversions SelectionOwner::conversionsOf(const xcb_selection_request_event_t& request) const {
    const xcb_atom_t multiple = connection_.atom("MULTIPLE");
    if (request.target != multiple) {
        // Programs of old name no property.
        return {request.target, request.property != XCB_ATOM_NONE ? request.property : request.target};
    }
    if (request.property == XCB_ATOM_NONE) {
        return {};
    }
    Conversions pairs = connection_.cardinals(request.requestor, request.property);
    constexpr std::size_t mostPairs = 256;
    if (pairs.size() % 2 != 0 || pairs.size() > 2 * mostPairs) {
        return {};
    }
    for (std::size_t index = 0; index < pairs.size(); index += 2) {
        if (pairs[index] == multiple) {
            pairs[index + 1] = XCB_ATOM_NONE;
        }
    }
    return pairs;
}

SelectionForm* SelectionOwner::formOf(const Forms& forms, xcb_atom_t target) const {
    const auto form = std::find_if(forms->begin(), forms->end(), [&](const SelectionForm& offered) {
        return connection_.atom(offered.target) == target;
    });
    return form == forms->end() ? nullptr : &*form;
}

std::vector<std::shared_ptr<PromisedBytes>> SelectionOwner::pendingOf(const Waiting& waiting) const {
    std::vector<std::shared_ptr<PromisedBytes>> pending;
    for (std::size_t index = 0; index + 1 < waiting.conversions.size(); index += 2) {
        SelectionForm* form = waiting.conversions[index + 1] == XCB_ATOM_NONE
                                  ? nullptr
                                  : formOf(waiting.forms, waiting.conversions[index]);
        if (form != nullptr && form->bytes().isPending()) {
            pending.push_back(form->made);
        }
    }
    return pending;
}

void SelectionOwner::wait(Waiting waiting, const std::vector<std::shared_ptr<PromisedBytes>>& pending) {
    waiting_.push_back(std::move(waiting));
    const auto place = std::prev(waiting_.end());
    for (const auto& promised : pending) {
        place->news.push_back(promised->onSettled([this] { answerWaiting(); }));
    }
    place->limit = loop_.after(makingLimit, [this, place] {
        Waiting late = std::move(*place);
        waiting_.erase(place);
        answerNow(std::move(late));
    });
}

void SelectionOwner::answerWaiting() {
    for (auto each = waiting_.begin(); each != waiting_.end();) {
        const auto place = each++;
        if (pendingOf(*place).empty()) {
            Waiting asked = std::move(*place);
            waiting_.erase(place);
            answerNow(std::move(asked));
        }
    }
}

void SelectionOwner::refuseWaiting() {
    while (!waiting_.empty()) {
        Waiting asked = std::move(waiting_.front());
        waiting_.pop_front();
        answerNow(std::move(asked));
    }
}

void SelectionOwner::answerNow(Waiting waiting) {
    const xcb_selection_request_event_t& request = waiting.request;
    Conversions& pairs = waiting.conversions;
    for (std::size_t index = 0; index + 1 < pairs.size(); index += 2) {
        if (pairs[index + 1] != XCB_ATOM_NONE && !convert(waiting, pairs[index], pairs[index + 1])) {
            pairs[index + 1] = XCB_ATOM_NONE;
        }
    }
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    if (!pairs.empty() && request.target == connection_.atom("MULTIPLE")) {
        // Which of them were refused stands in the list.
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                            connection_.atom("ATOM_PAIR"), 32, static_cast<std::uint32_t>(pairs.size()), pairs.data());
        notify.property = request.property;
    } else {
        notify.property = pairs.empty() ? xcb_atom_t{XCB_ATOM_NONE} : pairs.back();
    }
    xcb_send_event(connection_.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&notify));
    xcb_flush(connection_.get());
}

bool SelectionOwner::convert(const Waiting& waiting, xcb_atom_t target, xcb_atom_t property) {
    xcb_connection_t* x = connection_.get();
    const xcb_window_t requestor = waiting.request.requestor;
    if (target == connection_.atom("TARGETS")) {
        const auto atoms = targets(waiting.forms);
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                            static_cast<std::uint32_t>(atoms.size()), atoms.data());
        return true;
    }
    if (target == connection_.atom("TIMESTAMP")) {
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1, &time_);
        return true;
    }
    if (target == connection_.atom("SAVE_TARGETS")) {
        // Only says that we know how to hand over.
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, requestor, property, connection_.atom("NULL"), 32, 0, nullptr);
        return true;
    }
    SelectionForm* form = formOf(waiting.forms, target);
    const SharedBytes bytes = form == nullptr ? nullptr : form->bytes().bytes();
    if (!bytes) {
        return false;
    }
    giveBytes(requestor, property, connection_.atom(form->type), bytes);
    return true;
}

// Asked anew in the same place: what it gave up taking must not come in between.
void SelectionOwner::dropSendings(xcb_window_t requestor, xcb_atom_t property) {
    sendings_.remove_if([&](const Sending& each) { return each.requestor == requestor && each.property == property; });
}

void SelectionOwner::giveBytes(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, const SharedBytes& bytes) {
    xcb_connection_t* x = connection_.get();
    dropSendings(requestor, property);
    if (bytes->size() <= largestPiece) {
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, requestor, property, type, 8,
                            static_cast<std::uint32_t>(bytes->size()), bytes->data());
        return;
    }
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(x, requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<std::uint32_t>(bytes->size());
    const auto cookie =
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, requestor, property, connection_.atom("INCR"), 32, 1, &size);
    sendings_.push_back(
        {.requestor = requestor, .property = property, .type = type, .bytes = bytes, .written = cookie.sequence});
    allow(std::prev(sendings_.end()));
}

void SelectionOwner::allow(std::list<Sending>::iterator sending) {
    sending->limit = loop_.after(sendingLimit, [this, sending] { sendings_.erase(sending); });
}

void SelectionOwner::sendPiece(const xcb_property_notify_event_t& notify, std::uint32_t sequence) {
    if (notify.state != XCB_PROPERTY_DELETE) {
        return;
    }
    const auto sending = std::find_if(sendings_.begin(), sendings_.end(), [&](const Sending& each) {
        return each.requestor == notify.window && each.property == notify.atom;
    });
    // GTK takes its list of targets away only after it has asked for the contents in the same place: a deletion from
    // before the last piece was written doesn't mean that piece.
    if (sending == sendings_.end() || static_cast<std::int32_t>(sequence - sending->written) < 0) {
        return;
    }
    const std::size_t length = std::min(largestPiece, sending->bytes->size() - sending->sent);
    const auto cookie = xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, sending->requestor,
                                            sending->property, sending->type, 8, static_cast<std::uint32_t>(length),
                                            sending->bytes->data() + sending->sent);
    xcb_flush(connection_.get());
    sending->written = cookie.sequence;
    sending->sent += length;
    if (length == 0) {
        sendings_.erase(sending); // the empty piece that ends it
    } else {
        allow(sending);
    }
}

void SelectionOwner::handOver() {
    if (forms_) {
        offerToManager();
    }
    refuseWaiting();
    forms_ = nullptr;
}

void SelectionOwner::offerToManager() {
    xcb_connection_t* x = connection_.get();
    const xcb_atom_t managerSelection = connection_.atom("CLIPBOARD_MANAGER");
    const auto cookie = xcb_get_selection_owner(x, managerSelection);
    const XReply<xcb_get_selection_owner_reply_t> manager(xcb_get_selection_owner_reply(x, cookie, nullptr));
    if (!manager || manager->owner == XCB_WINDOW_NONE) {
        return;
    }
    std::vector<xcb_atom_t> saved;
    for (const SelectionForm& form : *forms_) {
        if (!form.made || !form.made->isBroken()) {
            saved.push_back(connection_.atom(form.target));
        }
    }
    const xcb_atom_t saveTargets = connection_.atom("SAVE_TARGETS");
    const xcb_atom_t property = connection_.atom(savedProperty);
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(saved.size()), saved.data());
    xcb_convert_selection(x, window_, managerSelection, saveTargets, property, connection_.serverTime());
    xcb_flush(x);
    // The event loop has ended; the manager asks for the contents meanwhile. Some own the selection, never answer it
    // and keep what was copied by means of their own: nobody is kept waiting for those.
    const double begin = loop_.now();
    lastAsked_ = begin;
    while (!handedOver_ && loop_.now() < std::min(begin + handOverLimit, lastAsked_ + signOfLifeLimit) &&
           xcb_connection_has_error(x) == 0) {
        connection_.deliver();
        if (!waiting_.empty() || !sendings_.empty()) {
            lastAsked_ = loop_.now(); // what was asked for isn't all there yet
        }
        if (loop_.now() < begin + lastMakingLimit) {
            answerWaiting();
        } else {
            refuseWaiting(); // so that it can still take the rest
        }
        constexpr int moment = 20; // milliseconds
        pollfd waiting{.fd = xcb_get_file_descriptor(x), .events = POLLIN, .revents = 0};
        if (!handedOver_) {
            ::poll(&waiting, 1, moment);
        }
    }
}

} // namespace rb
