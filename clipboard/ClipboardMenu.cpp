#include "app/DefaultsKeys.h"
#include "app/Toasts.h"
#include "clipboard/ClipText.h"
#include "clipboard/ClipboardHistory.h"
#include "clipboard/PasteboardReading.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/ByteCounts.h"
#include "platform/Files.h"
#include "platform/Pasteboards.h"
#include "platform/Thumbnails.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr std::size_t titleCharacters = 38;
constexpr std::size_t toolTipCharacters = 600;
constexpr std::size_t keyedEntries = 9;
constexpr double imageSide = 26;
constexpr double imageCornerRadius = 5;
constexpr double iconSide = 22;

std::string textTitle(const std::string& text) {
    std::string title(firstLineNotBlank(text));
    std::replace(title.begin(), title.end(), '\t', ' ');
    if (utf16Length(title) > titleCharacters) {
        title = std::string(utf16Prefix(title, titleCharacters)) + "…";
    }
    return title.empty() ? "（空白文字）" : title;
}

std::string filesTitle(const std::vector<std::string>& paths) {
    std::string name = paths.empty() ? "文件" : lastPathComponent(paths.front());
    if (paths.size() >= 2) {
        name += " 等 " + std::to_string(paths.size()) + " 项";
    }
    return name;
}

std::string ageText(double seconds) {
    constexpr double minute = 60;
    constexpr double hour = 3600;
    constexpr double day = 86400;
    const auto whole = [seconds](double unit) {
        return std::to_string(static_cast<long long>(std::floor(seconds / unit)));
    };
    if (seconds < minute) {
        return "刚刚";
    }
    if (seconds < hour) {
        return whole(minute) + " 分钟前";
    }
    return seconds < day ? whole(hour) + " 小时前" : whole(day) + " 天前";
}

// The name of the folder that holds the file.
std::string folderName(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return {};
    }
    return slash == 0 ? "/" : lastPathComponent(path.substr(0, slash));
}

std::string toolTipFor(const RBClipItem& item) {
    if (item.kind() == RBClipItem::Files && item.paths()) {
        std::string lines;
        for (const std::string& path : *item.paths()) {
            lines += (lines.empty() ? "" : "\n") + path;
        }
        return lines;
    }
    if (item.kind() == RBClipItem::Text && item.text()) {
        return item.textLength() > toolTipCharacters ? std::string(utf16Prefix(*item.text(), toolTipCharacters)) + "…"
                                                     : *item.text();
    }
    return {};
}

// Nothing for what can't be read or decoded. Any thread.
DecodedPicture decodedThumb(Thumbnails& thumbnails, const SharedBlob& data) {
    const SharedBytes bytes = data ? data->bytes() : nullptr;
    return bytes ? thumbnails.squareThumb(bytes, imageSide, imageCornerRadius) : DecodedPicture();
}

} // namespace

// Not when it is copied: most pictures are pasted elsewhere long before anyone looks for them here.
void RBClipboardHistory::prepareMenu() {
    for (const auto& item : items_) {
        if (item->kind() != RBClipItem::Picture || std::exchange(item->thumbnailAsked, true) ||
            !std::holds_alternative<std::monostate>(item->thumbnail)) {
            continue;
        }
        desktop_.runLoop.background(QualityOfService::UserInitiated,
                                    [&thumbnails = desktop_.thumbnails, &loop = desktop_.runLoop,
                                     data = item->imageData(), weak = std::weak_ptr(item)] {
                                        if (weak.expired()) {
                                            return;
                                        }
                                        loop.post([weak, decoded = decodedThumb(thumbnails, data)] {
                                            const auto entry = weak.lock();
                                            if (entry && std::holds_alternative<std::monostate>(entry->thumbnail)) {
                                                entry->pixelSize = decoded.pixelSize;
                                                entry->thumbnail = decoded.thumbnail;
                                            }
                                        });
                                    });
    }
}

std::string RBClipboardHistory::titleFor(RBClipItem& item) const {
    switch (item.kind()) {
    case RBClipItem::Files:
        return filesTitle(item.paths().value_or(std::vector<std::string>()));
    case RBClipItem::Picture: {
        thumbnailFor(item); // which finds out the size
        if (item.pixelSize.width <= 0) {
            return "图片";
        }
        const auto whole = [](double pixels) { return std::to_string(std::llround(pixels)); };
        return "图片  " + whole(item.pixelSize.width) + " × " + whole(item.pixelSize.height);
    }
    case RBClipItem::Text:
        return textTitle(item.text().value_or(""));
    default:
        return {};
    }
}

std::string RBClipboardHistory::subtitleFor(const RBClipItem& item) const {
    std::string age = ageText(desktop_.runLoop.wallClock() - item.date);
    switch (item.kind()) {
    case RBClipItem::Files:
        return age + " · " + (item.paths() && !item.paths()->empty() ? folderName(item.paths()->front()) : "");
    case RBClipItem::Picture:
        return age + " · " +
               desktop_.byteCounts.fileStyle(
                   static_cast<std::int64_t>(item.imageData() ? item.imageData()->size() : 0));
    case RBClipItem::Text:
        return age + " · " + std::to_string(item.textLength()) + " 字";
    default:
        return age;
    }
}

const Image& RBClipboardHistory::thumbnailFor(RBClipItem& item) const {
    if (!std::holds_alternative<std::monostate>(item.thumbnail)) {
        return item.thumbnail;
    }
    if (item.kind() == RBClipItem::Picture) {
        DecodedPicture decoded = decodedThumb(desktop_.thumbnails, item.imageData());
        item.pixelSize = decoded.pixelSize;
        item.thumbnail = std::move(decoded.thumbnail);
    } else if (item.kind() == RBClipItem::Files && item.paths() && !item.paths()->empty()) {
        item.thumbnail = desktop_.thumbnails.iconForFile(item.paths()->front(), iconSide);
    } else {
        const std::string_view text = item.text() ? trimmedWhole(*item.text()) : std::string_view();
        const bool isLink = text.starts_with("http://") || text.starts_with("https://");
        item.thumbnail = Symbol{.name = isLink ? "link" : "text.alignleft"};
    }
    return item.thumbnail;
}

void RBClipboardHistory::menuNeedsUpdate(Menu& menu) {
    menu.removeAllItems();
    if (items_.empty()) {
        menu.addItem({.title = paused_ ? "记录已暂停" : "还没有复制记录", .enabled = false});
    }
    for (std::size_t position = 0; position < items_.size(); ++position) {
        addEntry(menu, items_[position], position);
    }
    menu.addSeparator();
    menu.addItem({.title = "点选即复制 · 按住 ⌥ 删除单条", .enabled = false});
    menu.addItem({.title = "暂停记录", .action = [this](MenuItem&) { togglePause(); }, .on = paused_});
    menu.addItem({.title = "清空历史…", .action = [this](MenuItem&) { clearHistory(); }, .enabled = !items_.empty()});
}

void RBClipboardHistory::addEntry(Menu& menu, const std::shared_ptr<RBClipItem>& item, std::size_t position) {
    const std::string title = titleFor(*item);
    const std::string key = position < keyedEntries ? std::to_string(position + 1) : "";
    const auto chosen = [](const MenuItem& sender) {
        const auto* entry = std::any_cast<std::shared_ptr<RBClipItem>>(&sender.representedObject);
        return entry ? *entry : nullptr;
    };
    menu.addItem({.title = title,
                  .image = thumbnailFor(*item),
                  .action = [this, chosen](MenuItem& sender) { copyItem(chosen(sender)); },
                  .keyEquivalent = key,
                  .keyEquivalentModifiers = NoModifiers,
                  .toolTip = toolTipFor(*item),
                  .subtitle = subtitleFor(*item),
                  .representedObject = item});
    menu.addItem({.title = "删除  " + title,
                  .image = Symbol{.name = "trash"},
                  .action = [this, chosen](MenuItem& sender) { removeItem(chosen(sender)); },
                  .keyEquivalent = key,
                  .keyEquivalentModifiers = OptionModifier,
                  .alternate = true,
                  .representedObject = item});
}

bool RBClipboardHistory::writeToPasteboard(const RBClipItem& item) {
    switch (item.kind()) {
    case RBClipItem::Files: {
        PasteboardFiles present{item.paths().value_or(std::vector<std::string>())};
        std::erase_if(present.paths, [this](const auto& path) { return !desktop_.files.facts(path).exists; });
        return !present.paths.empty() && pasteboard_.write(std::move(present));
    }
    case RBClipItem::Picture: {
        SharedBytes data = item.imageData() ? item.imageData()->bytes() : nullptr;
        return data && pasteboard_.write(PasteboardData{item.imageType().value_or(""), std::move(data)});
    }
    default:
        return pasteboard_.write(item.text().value_or(""));
    }
}

void RBClipboardHistory::copyItem(const std::shared_ptr<RBClipItem>& item) {
    if (!item) {
        return;
    }
    const bool copied = writeToPasteboard(*item);
    lastChangeCount_ = pasteboard_.changeCount(); // our own writing isn't recorded
    reading_.reset();
    if (!copied) {
        toasts_.RBShowToast(item->kind() == RBClipItem::Files ? "原文件已不存在" : "复制失败",
                            "exclamationmark.triangle.fill", SystemColor::Orange);
        return;
    }
    item->date = desktop_.runLoop.wallClock();
    std::erase(items_, item);
    items_.insert(items_.begin(), item);
    trim();
    scheduleSave();
    toasts_.RBShowToast("已复制，按 ⌘V 粘贴", "doc.on.clipboard.fill", SystemColor::Green);
}

void RBClipboardHistory::removeItem(const std::shared_ptr<RBClipItem>& item) {
    std::erase(items_, item);
    scheduleSave();
}

void RBClipboardHistory::togglePause() {
    paused_ = !paused_;
    desktop_.userDefaults.setObject(DefaultsKey::ClipboardPaused, paused_);
    lastChangeCount_ = pasteboard_.changeCount();
    reading_.reset();
    if (paused_) {
        toasts_.RBShowToast("剪贴板记录已暂停", "pause.circle.fill", SystemColor::Blue);
    } else {
        toasts_.RBShowToast("剪贴板记录已恢复", "play.circle.fill", SystemColor::Blue);
    }
}

void RBClipboardHistory::clearHistory() {
    desktop_.application.activateIgnoringOtherApps();
    desktop_.alerts.runModal(
        {.messageText = "清空剪贴板历史？",
         .informativeText = "将删除全部 " + std::to_string(items_.size()) + " 条记录，当前剪贴板内容不受影响。",
         .buttons = {{.title = "清空", .destructive = true}, {.title = "取消"}}},
        lifetime_.guard([this](std::size_t button) {
            if (button == 0) {
                items_.clear();
                scheduleSave();
            }
        }));
}

} // namespace rb
