#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"
#include "platform/RunLoop.h"
#include "screenshots/CaptureFlight.h"
#include "screenshots/Inbox.h"
#include "screenshots/ScreenshotWatcher.h"

#include <memory>
#include <optional>
#include <string>

namespace rb {

class RBClothesline;
class Toasts;

// The line's dealings with screenshots: which folders it watches, when the system's settings are taken over, and how
// a new capture comes onto the line.
class LineCaptures {
public:
    LineCaptures(const Desktop& desktop, RBClothesline& line, Toasts& toasts);

    void start();
    void stop();
    const RBInbox& inbox() const { return inbox_; }

    void startWatcher();
    void stopWatcher();
    // Takes the system's settings over, whatever the stored setting says.
    void applyScreenshotSettings() { inbox_.apply(); }
    // Gives them back when the takeover is on.
    void restoreScreenshotSettings();
    // Switches the takeover and stores whether it is on.
    void setInbox(bool on);

    // Hangs a new capture; from where it was taken, when that is known.
    void hangCapture(const std::string& path);
    std::size_t flightsInProgress() const { return flights_.inProgress(); }

private:
    std::unique_ptr<RBScreenshotWatcher> makeWatcher(const std::string& folder);
    void followScreenshotFolder();
    void offerInbox();
    std::optional<Rect> captureRect(const std::string& path) const;
    void fly(const RBPegItemRef& item, const Rect& from);
    void land(const RBPegItemRef& item);

    const Desktop& desktop_;
    RBClothesline& line_;
    Toasts& toasts_;
    RBInbox inbox_;
    std::unique_ptr<RBScreenshotWatcher> watcher_;
    std::unique_ptr<RBScreenshotWatcher> desktopWatcher_;
    Handle folderTimer_;
    RBCaptureFlights flights_;
    DelayedCalls later_;
    Lifetime lifetime_;
};

} // namespace rb
