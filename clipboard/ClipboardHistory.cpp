#include "clipboard/ClipboardHistory.h"

#include "app/DefaultsKeys.h"
#include "clipboard/PasteboardReading.h"
#include "platform/Archives.h"
#include "platform/Pasteboards.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double pollInterval = 0.5;
constexpr double pollTolerance = 0.2;
constexpr double saveDelay = 1.5;
constexpr const char* storeName = "Clipboard.archive";

} // namespace

RBClipboardHistory::RBClipboardHistory(const Desktop& desktop, Toasts& toasts)
    : desktop_(desktop)
    , toasts_(toasts)
    , pasteboard_(desktop.pasteboards.general())
    , paused_(desktop.userDefaults.boolForKey(DefaultsKey::ClipboardPaused))
    , delayed_(desktop.runLoop) {
    menu_->autoenablesItems = false;
    menu_->needsUpdate = [this](Menu& menu) { menuNeedsUpdate(menu); };
}

RBClipboardHistory::~RBClipboardHistory() {
    menu_->needsUpdate = nullptr; // the status item may hold the menu a little longer
    menu_->removeAllItems();
}

void RBClipboardHistory::start() {
    if (std::exchange(recording_, true)) {
        return;
    }
    if (!std::exchange(loaded_, true)) {
        load();
    }
    lastChangeCount_ = pasteboard_.changeCount();
    // Where the system tells of changes the timer has nothing to find; and a program that copies and ends at once
    // can't answer half a second later.
    changes_ = pasteboard_.onChange([this] { poll(); });
    if (!changes_) {
        timer_ = desktop_.runLoop.every(pollInterval, pollTolerance, [this] { poll(); });
    }
}

void RBClipboardHistory::stop() {
    recording_ = false;
    timer_.reset();
    changes_.reset();
    reading_.reset();
}

std::string RBClipboardHistory::storeURL() const {
    return desktop_.archives.location(storeName);
}

void RBClipboardHistory::load() {
    const auto archived = desktop_.archives.read(storeURL(), RBClipItem::archiveClass());
    if (!archived) {
        return;
    }
    const double now = desktop_.runLoop.wallClock();
    for (const ArchiveObject& object : *archived) {
        RBClipItem item = RBClipItem::decode(object, now);
        if (item.isValid()) {
            items_.push_back(std::make_shared<RBClipItem>(std::move(item)));
        }
    }
    trim();
}

void RBClipboardHistory::trim() {
    if (items_.size() > historyLimit) {
        items_.resize(historyLimit);
    }
}

void RBClipboardHistory::poll() {
    const std::int64_t count = pasteboard_.changeCount();
    if (count == lastChangeCount_) {
        return;
    }
    lastChangeCount_ = count;
    reading_.reset(); // of what isn't there any more
    if (paused_) {
        return;
    }
    reading_ = std::make_unique<PasteboardReading>(pasteboard_, desktop_.runLoop.wallClock(),
                                                   [this](std::optional<RBClipItem> item) {
                                                       if (item) {
                                                           insert(std::move(*item));
                                                       }
                                                   });
    reading_->start();
}

void RBClipboardHistory::insert(RBClipItem item) {
    const auto same =
        std::find_if(items_.begin(), items_.end(), [&](const auto& entry) { return entry->sameContentAs(item); });
    if (same != items_.end()) {
        items_.erase(same);
    }
    items_.insert(items_.begin(), std::make_shared<RBClipItem>(std::move(item)));
    trim();
    scheduleSave();
}

void RBClipboardHistory::scheduleSave() {
    if (std::exchange(saveScheduled_, true)) {
        return;
    }
    delayed_.after(saveDelay, [this] {
        saveScheduled_ = false;
        saveNow();
    });
}

// One writing at a time: an older state must never replace a newer one.
void RBClipboardHistory::saveNow() {
    if (writing_) {
        saveAgain_ = true;
        return;
    }
    const std::string url = storeURL();
    if (url.empty()) {
        return;
    }
    writing_ = true;
    std::vector<RBClipItem> snapshot;
    snapshot.reserve(items_.size());
    for (const auto& item : items_) {
        snapshot.push_back(*item);
        snapshot.back().thumbnail = {};
    }
    // Only posted to: the callback finds nobody once this is gone.
    auto done = lifetime_.guard([this] {
        writing_ = false;
        if (std::exchange(saveAgain_, false)) {
            saveNow();
        }
    });
    desktop_.runLoop.background(QualityOfService::Utility, [&archives = desktop_.archives, &loop = desktop_.runLoop,
                                                            url, snapshot = std::move(snapshot), done]() mutable {
        std::vector<ArchiveObject> objects;
        objects.reserve(snapshot.size());
        for (const RBClipItem& item : snapshot) {
            objects.push_back(item.encode());
        }
        archives.write(url, RBClipItem::archiveClass(), objects);
        loop.post(done);
    });
}

} // namespace rb
