#pragma once

#include "tests/session/frame/XClient.h"

#include <atomic>
#include <map>
#include <string>
#include <thread>

namespace rb {

// Another program that has copied something, as badly behaved as a test wants it. It owns CLIPBOARD from its creation
// on and answers in a thread of its own; it dies with this object.
class CopyingProgram {
public:
    struct Manners {
        std::map<std::string, std::string> offered; // what it gives, by target
        int furtherTargets = 0;                     // that many unknown ones before
        bool answersTargets = true;
        bool answersContents = true;
        // Promises contents in pieces of that many bytes, this many of them, and then nothing more; 0 for all at once.
        std::size_t pieceSize = 0;
        std::size_t mostPieces = 1'000'000;
        std::uint32_t promisedSize = 0;
    };
    CopyingProgram(const std::string& display, Manners manners);
    ~CopyingProgram();
    CopyingProgram(const CopyingProgram&) = delete;
    CopyingProgram& operator=(const CopyingProgram&) = delete;

    // How often that target was asked for.
    int asked(const std::string& target) const;
    // Takes the clipboard again, as at another copy.
    void copyAgain();

private:
    struct Sending {
        xcb_window_t window = 0;
        xcb_atom_t property = 0;
        xcb_atom_t type = 0;
        std::string bytes;
        std::size_t sent = 0;
        std::size_t pieces = 0;
    };
    void run();
    void answer(const xcb_selection_request_event_t& request);
    void send(const xcb_property_notify_event_t& notify);

    XClient x_;
    Manners manners_;
    xcb_window_t window_ = 0;
    xcb_atom_t clipboard_ = 0;
    std::map<xcb_atom_t, std::string> names_;
    std::vector<xcb_atom_t> targets_;
    std::map<std::string, std::atomic<int>> asked_;
    std::vector<Sending> sendings_;
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

} // namespace rb
