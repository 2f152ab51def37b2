#pragma once

#include "tests/session/frame/XClient.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// A program that copies, with a stopwatch: it knows when another program has taken the contents away. Everything
// happens within serve().
class ClipboardOwner {
public:
    explicit ClipboardOwner(const std::string& display);
    ~ClipboardOwner();
    ClipboardOwner(const ClipboardOwner&) = delete;
    ClipboardOwner& operator=(const ClipboardOwner&) = delete;

    // Copies; `contents` is given by target. Nobody has taken anything yet.
    void copy(const std::map<std::string, std::string>& contents);
    double copiedAt() const { return copiedAt_; }
    // When somebody had all of a target's contents for the first time, on the monotonic clock.
    std::optional<double> takenAt() const { return takenAt_; }
    // Answers requests until there has been a taking, or that many seconds long. True after a taking.
    bool serveUntilTaken(double limit);
    void serve(double seconds);

private:
    struct Giving {
        xcb_window_t window = 0;
        xcb_atom_t property = 0;
        xcb_atom_t type = 0;
        const std::string* bytes = nullptr; // null for what isn't contents
        std::size_t sent = 0;
        bool inPieces = false;
        std::uint32_t written = 0; // the number of the request that wrote what lies there
    };
    void handle(const xcb_generic_event_t& event);
    void answer(const xcb_selection_request_event_t& request);
    void deleted(const xcb_property_notify_event_t& notify, std::uint32_t sequence);
    bool step(double until);

    XClient x_;
    xcb_window_t window_ = 0;
    xcb_atom_t clipboard_ = 0;
    xcb_atom_t targets_ = 0;
    xcb_atom_t incremental_ = 0;
    std::map<xcb_atom_t, std::string> contents_; // by target
    std::vector<Giving> givings_;
    double copiedAt_ = 0;
    std::optional<double> takenAt_;
};

} // namespace rb
