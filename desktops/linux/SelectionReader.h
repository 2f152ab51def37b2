#pragma once

#include "platform/Bytes.h"
#include "platform/Handle.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace rb {

class RunLoop;
class XConnection;

// Asks the owner of a selection for what it offers. The answer arrives with the X events, in pieces where it is large;
// whatever the owner does, an answer comes within a time limit, and never more of it than was asked for. Main thread
// only.
class SelectionReader {
public:
    // Nothing for a refusal, too much of it, a late or a dead owner.
    using Answer = std::function<void(std::optional<Bytes>)>;

    SelectionReader(XConnection& connection, RunLoop& loop);
    ~SelectionReader();
    SelectionReader(const SelectionReader&) = delete;
    SelectionReader& operator=(const SelectionReader&) = delete;

    // The answer comes in a later turn, unless the handle went. Items of 32 bits are four bytes each, in this
    // machine's order. `time` is when the owner took the selection.
    Handle read(xcb_atom_t selection, xcb_atom_t target, xcb_timestamp_t time, std::size_t mostBytes, Answer answer);
    // The owner is gone: whatever is being read has failed.
    void ownerChanged();

private:
    struct Transfer {
        xcb_atom_t property = XCB_ATOM_NONE;
        xcb_atom_t target = XCB_ATOM_NONE;
        std::size_t most = 0;
        Bytes bytes = {};
        bool incremental = false;
        double end = 0; // on the run loop's clock
        Handle limit = {};
        Answer answer = {};
    };
    enum class Piece { Taken, TooMuch, Incremental, Failed };

    void prepare();
    void handle(const xcb_generic_event_t& event);
    void selectionCame(const xcb_selection_notify_event_t& notify);
    void pieceCame(const xcb_property_notify_event_t& notify);
    // Moves what is in the property into the transfer and deletes it, which asks the owner for more.
    Piece take(Transfer& transfer);
    void allow(std::uint64_t id, double seconds);
    void finish(std::uint64_t id, bool complete);
    xcb_atom_t freeProperty();

    XConnection& connection_;
    RunLoop& loop_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    Handle events_;
    std::map<std::uint64_t, std::unique_ptr<Transfer>> transfers_; // by number, the oldest first
    std::uint64_t next_ = 0;
    // Names that nobody writes to. One whose transfer was given up is not used again: its owner may still write.
    std::vector<xcb_atom_t> freeProperties_;
    int properties_ = 0;
    Lifetime lifetime_;
};

} // namespace rb
