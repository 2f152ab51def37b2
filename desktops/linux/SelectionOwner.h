#pragma once

#include "platform/Bytes.h"
#include "platform/Handle.h"
#include "platform/PromisedBytes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace rb {

class RunLoop;
class XConnection;

// One form in which a selection's contents are offered.
struct SelectionForm {
    std::string target;
    std::string type; // of the property that carries it
    // Asked once, when somebody first wants the bytes.
    std::function<std::shared_ptr<PromisedBytes>()> make;
    std::shared_ptr<PromisedBytes> made = nullptr;

    PromisedBytes& bytes() {
        if (!made) {
            made = make();
        }
        return *made;
    }
};

// Holds a selection for the program and gives its contents to others for as long as it holds it. Who asks for something
// that is still being made is answered when it is there; once it turns out that it can't be made it isn't offered any
// more. Not by Qt's clipboard, which takes the selection at the time of the last event that Qt saw: a choice that comes
// over the session bus is none, and the server would refuse. Main thread only.
class SelectionOwner {
public:
    SelectionOwner(XConnection& connection, RunLoop& loop, std::string selection);
    ~SelectionOwner();
    SelectionOwner(const SelectionOwner&) = delete;
    SelectionOwner& operator=(const SelectionOwner&) = delete;

    // Takes the selection; false when the server refuses.
    bool take(std::vector<SelectionForm> forms);
    xcb_window_t window() const { return window_; }
    // Somebody is still taking a large answer away or waits for one.
    bool isSending() const { return !sendings_.empty() || !waiting_.empty(); }
    // When it took the selection last, on the server's clock.
    xcb_timestamp_t time() const { return time_; }
    // Before the program ends: gives what it holds to a clipboard manager, where one runs. Waits for it a moment, also
    // for what is still being made. Nothing is held afterwards, and nobody is left waiting.
    void handOver();

private:
    // A large answer, given piece by piece as the other program takes the pieces away.
    struct Sending {
        xcb_window_t requestor = XCB_WINDOW_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        xcb_atom_t type = XCB_ATOM_NONE;
        SharedBytes bytes = {};
        std::size_t sent = 0;
        std::uint32_t written = 0; // the number of the request that wrote the last piece
        Handle limit = {};
    };

    using Forms = std::shared_ptr<std::vector<SelectionForm>>;
    // What one request asks for: pairs of a target and the property to put it into.
    using Conversions = std::vector<std::uint32_t>;
    // A request for something that is still being made.
    struct Waiting {
        xcb_selection_request_event_t request = {};
        Conversions conversions = {};
        Forms forms = {}; // as they were when it was asked for
        std::vector<Handle> news = {};
        Handle limit = {};
    };

    void prepare();
    void offerToManager();
    void handle(const xcb_generic_event_t& event);
    void answer(const xcb_selection_request_event_t& request);
    // Empty for what can't be answered at all.
    Conversions conversionsOf(const xcb_selection_request_event_t& request) const;
    SelectionForm* formOf(const Forms& forms, xcb_atom_t target) const;
    // Those that a request waits for; the making of what it asks for begins.
    std::vector<std::shared_ptr<PromisedBytes>> pendingOf(const Waiting& waiting) const;
    void wait(Waiting waiting, const std::vector<std::shared_ptr<PromisedBytes>>& pending);
    // Answers those that wait for nothing any more.
    void answerWaiting();
    // What isn't there now is refused.
    void answerNow(Waiting waiting);
    void refuseWaiting();
    bool convert(const Waiting& waiting, xcb_atom_t target, xcb_atom_t property);
    void giveBytes(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, const SharedBytes& bytes);
    void dropSendings(xcb_window_t requestor, xcb_atom_t property);
    void sendPiece(const xcb_property_notify_event_t& notify, std::uint32_t sequence);
    void allow(std::list<Sending>::iterator sending);
    std::vector<xcb_atom_t> targets(const Forms& forms) const;

    XConnection& connection_;
    RunLoop& loop_;
    std::string selection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_timestamp_t time_ = XCB_CURRENT_TIME;
    Forms forms_; // null while someone else holds the selection
    std::list<Sending> sendings_;
    std::list<Waiting> waiting_;
    bool handedOver_ = false;
    double lastAsked_ = 0; // by anyone for anything, on the run loop's clock
    Handle events_;
};

} // namespace rb
