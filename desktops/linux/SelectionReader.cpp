#include "desktops/linux/SelectionReader.h"

#include "desktops/linux/XConnection.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace rb {

namespace {

// Programs answer within milliseconds; a picture may have to be encoded first.
constexpr double firstAnswerLimit = 4;
constexpr double pieceLimit = 3;
constexpr double wholeLimit = 20;

} // namespace

SelectionReader::SelectionReader(XConnection& connection, RunLoop& loop)
    : connection_(connection)
    , loop_(loop) {}

SelectionReader::~SelectionReader() {
    transfers_.clear();
    if (window_ != XCB_WINDOW_NONE) {
        xcb_destroy_window(connection_.get(), window_);
    }
}

void SelectionReader::prepare() {
    if (window_ != XCB_WINDOW_NONE) {
        return;
    }
    xcb_connection_t* x = connection_.get();
    window_ = xcb_generate_id(x);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
}

xcb_atom_t SelectionReader::freeProperty() {
    if (freeProperties_.empty()) {
        freeProperties_.push_back(connection_.atom("ROOKBAY_SELECTION_" + std::to_string(properties_++)));
    }
    const xcb_atom_t property = freeProperties_.back();
    freeProperties_.pop_back();
    return property;
}

Handle SelectionReader::read(xcb_atom_t selection, xcb_atom_t target, xcb_timestamp_t time, std::size_t mostBytes,
                             Answer answer) {
    prepare();
    const std::uint64_t id = next_++;
    auto transfer = std::make_unique<Transfer>();
    transfer->property = freeProperty();
    transfer->target = target;
    transfer->most = mostBytes;
    transfer->end = loop_.now() + wholeLimit;
    transfer->answer = std::move(answer);
    xcb_delete_property(connection_.get(), window_, transfer->property);
    xcb_convert_selection(connection_.get(), window_, selection, target, transfer->property, time);
    xcb_flush(connection_.get());
    transfers_.emplace(id, std::move(transfer));
    allow(id, firstAnswerLimit);
    return Handle(lifetime_.guard([this, id] { transfers_.erase(id); }));
}

void SelectionReader::allow(std::uint64_t id, double seconds) {
    Transfer& transfer = *transfers_.at(id);
    const double left = std::max(0.0, std::min(seconds, transfer.end - loop_.now()));
    transfer.limit = loop_.after(left, [this, id] { finish(id, false); });
}

void SelectionReader::finish(std::uint64_t id, bool complete) {
    const auto found = transfers_.find(id);
    if (found == transfers_.end()) {
        return;
    }
    const std::unique_ptr<Transfer> transfer = std::move(found->second);
    transfers_.erase(found);
    if (complete) {
        freeProperties_.push_back(transfer->property);
    }
    transfer->answer(complete ? std::optional(std::move(transfer->bytes)) : std::nullopt);
}

void SelectionReader::ownerChanged() {
    std::vector<std::uint64_t> ids;
    for (const auto& [id, transfer] : transfers_) {
        ids.push_back(id);
    }
    for (const std::uint64_t id : ids) {
        finish(id, false);
    }
}

void SelectionReader::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == XCB_SELECTION_NOTIFY) {
        selectionCame(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        pieceCame(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    }
}

void SelectionReader::selectionCame(const xcb_selection_notify_event_t& notify) {
    if (notify.requestor != window_) {
        return;
    }
    // A refusal names no property, and some programs' refusals not even the target.
    const auto found = std::find_if(transfers_.begin(), transfers_.end(), [&](const auto& entry) {
        const Transfer& transfer = *entry.second;
        return !transfer.incremental &&
               (notify.property != XCB_ATOM_NONE ? notify.property == transfer.property
                                                 : notify.target == transfer.target || notify.target == XCB_ATOM_NONE);
    });
    if (found == transfers_.end()) {
        return;
    }
    const std::uint64_t id = found->first;
    Transfer& transfer = *found->second;
    if (notify.property == XCB_ATOM_NONE) {
        freeProperties_.push_back(transfer.property);
        finish(id, false);
        return;
    }
    switch (take(transfer)) {
    case Piece::Taken:
        finish(id, true);
        break;
    case Piece::Incremental:
        transfer.incremental = true;
        allow(id, pieceLimit);
        break;
    case Piece::TooMuch:
    case Piece::Failed:
        finish(id, false);
        break;
    }
}

void SelectionReader::pieceCame(const xcb_property_notify_event_t& notify) {
    if (notify.window != window_ || notify.state != XCB_PROPERTY_NEW_VALUE) {
        return;
    }
    const auto found = std::find_if(transfers_.begin(), transfers_.end(), [&](const auto& entry) {
        return entry.second->incremental && entry.second->property == notify.atom;
    });
    if (found == transfers_.end()) {
        return;
    }
    const std::uint64_t id = found->first;
    const std::size_t before = found->second->bytes.size();
    if (take(*found->second) != Piece::Taken) {
        finish(id, false);
    } else if (found->second->bytes.size() == before) {
        finish(id, true); // an empty piece is the end
    } else {
        allow(id, pieceLimit);
    }
}

SelectionReader::Piece SelectionReader::take(Transfer& transfer) {
    constexpr std::size_t unit = 4; // bytes in which lengths are asked for
    const std::size_t room = transfer.most - transfer.bytes.size();
    const auto cookie = xcb_get_property(connection_.get(), 0, window_, transfer.property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                         static_cast<std::uint32_t>(room / unit + 1));
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    connection_.deliverQueuedEvents();
    if (!reply || reply->type == XCB_ATOM_NONE) {
        return Piece::Failed;
    }
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    const auto* value = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
    if (reply->type == connection_.atom("INCR") && !transfer.incremental) {
        std::uint32_t atLeast = 0;
        if (length >= sizeof atLeast) {
            std::memcpy(&atLeast, value, sizeof atLeast);
        }
        if (atLeast > transfer.most) {
            return Piece::TooMuch;
        }
        // What it says may be a lie: room that isn't used costs no memory, and more is made as the pieces come.
        transfer.bytes.reserve(atLeast);
        xcb_delete_property(connection_.get(), window_, transfer.property);
        xcb_flush(connection_.get());
        return Piece::Incremental;
    }
    if (reply->bytes_after > 0 || length > room) {
        return Piece::TooMuch;
    }
    transfer.bytes.insert(transfer.bytes.end(), value, value + length);
    xcb_delete_property(connection_.get(), window_, transfer.property);
    xcb_flush(connection_.get());
    return Piece::Taken;
}

} // namespace rb
