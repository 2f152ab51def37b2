#pragma once

#include "clipboard/ClipItem.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"
#include "platform/Menu.h"
#include "platform/RunLoop.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace rb {

class Pasteboard;
class PasteboardReading;
class Toasts;

// The last things that the user copied, newest first: recorded from the general pasteboard, kept in a private archive
// between runs, and offered again from a menu. What other programs mark as private is never read. Main thread only,
// but for encoding and writing the archive.
class RBClipboardHistory {
public:
    static constexpr std::size_t historyLimit = 30;

    // Reads nothing from disk yet.
    RBClipboardHistory(const Desktop& desktop, Toasts& toasts);
    ~RBClipboardHistory();
    RBClipboardHistory(const RBClipboardHistory&) = delete;
    RBClipboardHistory& operator=(const RBClipboardHistory&) = delete;

    // Loads the archive (once) and begins recording; what is on the pasteboard now isn't recorded.
    void start();
    // Ends recording. Nothing is saved or cleared.
    void stop();

    // Rebuilt from the entries each time it opens.
    const std::shared_ptr<Menu>& menu() const { return menu_; }
    const std::vector<std::shared_ptr<RBClipItem>>& items() const { return items_; }
    bool paused() const { return paused_; }
    std::int64_t lastChangeCount() const { return lastChangeCount_; }
    // The archive's path; its folder is made. Empty when that can't be done.
    std::string storeURL() const;

    std::string titleFor(RBClipItem& item) const;
    std::string subtitleFor(const RBClipItem& item) const;
    // Made when first asked for and kept with the entry.
    const Image& thumbnailFor(RBClipItem& item) const;

private:
    void load();
    void poll();
    void insert(RBClipItem item);
    void scheduleSave();
    void saveNow();
    void trim();

    void menuNeedsUpdate(Menu& menu);
    void addEntry(Menu& menu, const std::shared_ptr<RBClipItem>& item, std::size_t position);
    void copyItem(const std::shared_ptr<RBClipItem>& item);
    bool writeToPasteboard(const RBClipItem& item);
    void removeItem(const std::shared_ptr<RBClipItem>& item);
    void togglePause();
    void clearHistory();

    const Desktop& desktop_;
    Toasts& toasts_;
    Pasteboard& pasteboard_;
    std::shared_ptr<Menu> menu_ = std::make_shared<Menu>("剪贴板历史");
    std::vector<std::shared_ptr<RBClipItem>> items_;
    std::int64_t lastChangeCount_ = 0;
    bool paused_ = false;
    bool loaded_ = false;

    bool recording_ = false;
    Handle timer_;   // empty where the system tells of changes
    Handle changes_; // of the pasteboard, where the system tells
    std::unique_ptr<PasteboardReading> reading_;

    bool saveScheduled_ = false;
    bool writing_ = false;
    bool saveAgain_ = false; // asked for while the archive was written
    DelayedCalls delayed_;
    Lifetime lifetime_;
};

} // namespace rb
