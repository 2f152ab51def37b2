#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/Dragging.h"
#include "platform/Handle.h"

namespace rb {

class RunLoop;

// Notices other programs' drags while they are under way, by the drag selection, and asks their source what it
// carries. A drag counts from when that is known, so nobody takes a text for a file in between. Watching begins when
// the count is first asked for.
class LinuxDragPasteboard final : public DragPasteboard {
public:
    LinuxDragPasteboard(XConnection& connection, RunLoop& loop)
        : connection_(connection)
        , loop_(loop) {}
    LinuxDragPasteboard(const LinuxDragPasteboard&) = delete;
    LinuxDragPasteboard& operator=(const LinuxDragPasteboard&) = delete;

    std::int64_t changeCount() const override;
    std::vector<std::string> types() const override { return types_; }
    bool isOver() const override { return over_; }

private:
    void watch();
    void handle(const xcb_generic_event_t& event);
    // Escape and the button's release are heard by everybody; only while something is dragged.
    void watchInput(bool on);
    void handleInput(const xcb_ge_generic_event_t& event);
    void ask(xcb_window_t owner, xcb_timestamp_t time);
    void answered(std::vector<std::string> types);
    void answerFrom(xcb_atom_t property);
    // From the list that sources of many types leave on their window.
    void answerFromTypeList();

    XConnection& connection_;
    RunLoop& loop_;
    bool watching_ = false;
    std::int64_t changeCount_ = 0;
    std::vector<std::string> types_;
    bool over_ = false;
    int notifyType_ = 0;
    std::uint8_t inputOpcode_ = 0;          // 0 without the extension
    xcb_window_t window_ = XCB_WINDOW_NONE; // receives the answers
    xcb_window_t owner_ = XCB_WINDOW_NONE;  // of the drag that is asked about
    Handle patience_;
    Handle events_;
};

} // namespace rb
