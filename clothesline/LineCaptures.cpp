#include "clothesline/LineCaptures.h"

#include "app/DefaultsKeys.h"
#include "app/Toasts.h"
#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "clothesline/LineGeometry.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/Screens.h"
#include "platform/Screenshots.h"
#include "platform/Thumbnails.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace rb {

namespace {

constexpr double followInterval = 2;
constexpr double offerDelay = 1.2;
constexpr double peekTime = 2.5;
constexpr double layoutDelay = 0.03; // the line lays the new card out first
constexpr double landing = 0.16;
constexpr double smallestSide = 2;
constexpr double farthest = 1e6; // no screen reaches as far; beyond are mistakes
constexpr std::size_t mostFlights = 2;

std::optional<double> number(const PropertyValue& value) {
    if (const auto* real = value.get<double>()) {
        return *real;
    }
    const auto* integer = value.get<std::int64_t>();
    return integer != nullptr ? std::optional(static_cast<double>(*integer)) : std::nullopt;
}

// The four numbers of a rectangle from the top left; nothing for anything else.
std::optional<Rect> rectangle(const PropertyValue& value) {
    const auto* list = value.get<PropertyArray>();
    if (list == nullptr || list->size() != 4) {
        return std::nullopt;
    }
    std::array<double, 4> sides{};
    for (std::size_t i = 0; i < sides.size(); ++i) {
        const auto side = number((*list)[i]);
        if (!side || !(std::abs(*side) <= farthest)) {
            return std::nullopt;
        }
        sides[i] = *side;
    }
    return Rect{sides[0], sides[1], sides[2], sides[3]};
}

} // namespace

LineCaptures::LineCaptures(const Desktop& desktop, RBClothesline& line, Toasts& toasts)
    : desktop_(desktop)
    , line_(line)
    , toasts_(toasts)
    , inbox_(desktop.screenshotPreferences, desktop.userDefaults, desktop.files)
    , flights_(desktop)
    , later_(desktop.runLoop) {}

void LineCaptures::start() {
    const bool screenshots = line_.setting(DefaultsKey::ClotheslineScreenshots);
    if (screenshots && line_.setting(DefaultsKey::ClotheslineInbox)) {
        inbox_.apply();
    } else {
        // What a run that ended badly may have left behind.
        inbox_.restore();
    }
    if (screenshots) {
        startWatcher();
    }
    folderTimer_ = desktop_.runLoop.every(followInterval, followInterval / 4, [this] { followScreenshotFolder(); });
    if (screenshots && !line_.setting(DefaultsKey::ClotheslineInboxOffered)) {
        later_.after(offerDelay, [this] {
            if (folderTimer_) {
                offerInbox();
            }
        });
    }
}

void LineCaptures::stop() {
    folderTimer_.reset();
    stopWatcher();
    restoreScreenshotSettings();
}

std::unique_ptr<RBScreenshotWatcher> LineCaptures::makeWatcher(const std::string& folder) {
    auto watcher = std::make_unique<RBScreenshotWatcher>(desktop_);
    watcher->fixedFolder = folder;
    watcher->onNew = [this](const std::string& path) { hangCapture(path); };
    watcher->onDenied = [this, folder] {
        const std::string home = desktop_.files.homeDirectory();
        const std::string desktopFolder = desktop_.files.desktopDirectory();
        // Who has no Desktop doesn't miss it.
        if (standardizedPath(folder, home) == standardizedPath(desktopFolder, home) &&
            !desktop_.files.facts(desktopFolder).exists) {
            return;
        }
        toasts_.RBShowToast("无法读取截图文件夹，新截图不会自动挂上", "exclamationmark.triangle.fill",
                            SystemColor::Orange);
    };
    return watcher;
}

void LineCaptures::startWatcher() {
    if (watcher_) {
        return;
    }
    const std::string home = desktop_.files.homeDirectory();
    const std::string folder = RBScreenshotWatcher::screenshotFolder(desktop_);
    watcher_ = makeWatcher(folder);
    watcher_->acceptsRecordings = inbox_.contains(folder + "/x");
    watcher_->start();
    const std::string desktopFolder = desktop_.files.desktopDirectory();
    if (standardizedPath(folder, home) != standardizedPath(desktopFolder, home)) {
        desktopWatcher_ = makeWatcher(desktopFolder);
        desktopWatcher_->onDenied = nullptr;
        desktopWatcher_->start();
    }
}

void LineCaptures::stopWatcher() {
    for (auto* watcher : {&watcher_, &desktopWatcher_}) {
        if (*watcher) {
            (*watcher)->stop();
            // It may be in the middle of telling us something.
            desktop_.runLoop.post([gone = std::shared_ptr<RBScreenshotWatcher>(std::move(*watcher))] {});
        }
    }
}

void LineCaptures::followScreenshotFolder() {
    if (!watcher_ || watcher_->folder().empty()) {
        return;
    }
    if (line_.setting(DefaultsKey::ClotheslineInbox)) {
        inbox_.keepFolder();
    }
    const std::string home = desktop_.files.homeDirectory();
    if (standardizedPath(RBScreenshotWatcher::screenshotFolder(desktop_), home) !=
        standardizedPath(watcher_->folder(), home)) {
        stopWatcher();
        startWatcher();
        return;
    }
    watcher_->checkFolder();
    if (desktopWatcher_) {
        desktopWatcher_->checkFolder();
    }
}

void LineCaptures::restoreScreenshotSettings() {
    if (line_.setting(DefaultsKey::ClotheslineInbox)) {
        inbox_.restore();
    }
}

void LineCaptures::setInbox(bool on) {
    desktop_.userDefaults.setObject(DefaultsKey::ClotheslineInbox, on);
    if (on) {
        inbox_.apply();
    } else {
        inbox_.restore();
    }
    stopWatcher();
    if (line_.setting(DefaultsKey::ClotheslineScreenshots)) {
        startWatcher();
    }
}

void LineCaptures::offerInbox() {
    desktop_.userDefaults.setObject(DefaultsKey::ClotheslineInboxOffered, true);
    if (line_.setting(DefaultsKey::ClotheslineInbox)) {
        return;
    }
    desktop_.application.activateIgnoringOtherApps();
    const Alert offer{.messageText = "让截图直接挂到晾衣绳上？",
                      .informativeText = "截图会在按下快捷键的瞬间挂上，不再等浮动缩略图，也不会堆在桌面。想保留的拖进"
                                         "文件夹，或右键“存到桌面”；不要的点 × "
                                         "丢进废纸篓。\n\n这会修改系统截图设置（保存位置和浮动缩略图），退出 Rook Bay "
                                         "时自动恢复，也可随时在菜单栏 → 晾衣绳里关闭。",
                      .buttons = {{.title = "开启"}, {.title = "暂不"}}};
    desktop_.alerts.runModal(offer, lifetime_.guard([this](std::size_t button) {
        if (button == 0) {
            setInbox(true);
        }
    }));
}

std::optional<Rect> LineCaptures::captureRect(const std::string& path) const {
    const auto recorded = desktop_.captureFacts.captureRectangle(path);
    const auto rect = recorded ? rectangle(*recorded) : std::nullopt;
    const auto screens = desktop_.screens.all();
    if (!rect || screens.empty() || rect->width <= smallestSide || rect->height <= smallestSide) {
        return std::nullopt;
    }
    const Rect primary = screens.front().frame;
    return Rect{rect->x, primary.y + primary.height - rect->y - rect->height, rect->width, rect->height};
}

void LineCaptures::hangCapture(const std::string& path) {
    const std::optional<Rect> from = captureRect(path);
    std::optional<Screen> screen;
    if (from) {
        screen = RBScreenAt(desktop_.screens, {from->midX(), from->midY()});
    }
    if (!line_.revealed()) {
        line_.placeOnScreen(screen);
    } else if (screen) {
        const auto current = line_.panelScreen();
        if (!current || current->id != screen->id) {
            line_.placeOnScreen(screen);
        }
    }
    line_.setPeekUntil(desktop_.runLoop.now() + peekTime);
    line_.setRevealed(true);
    const RBPegItemRef item = line_.hangURL(path, {.flying = from.has_value(), .animated = true});
    if (from && item) {
        later_.after(layoutDelay, [this, item, rect = *from] { fly(item, rect); });
    }
}

void LineCaptures::fly(const RBPegItemRef& item, const Rect& from) {
    constexpr double fewestPixels = 400;
    constexpr double mostPixels = 1500;
    const auto& items = line_.items();
    const auto screen = line_.panelScreen();
    if (std::find(items.begin(), items.end(), item) == items.end() || !line_.revealed() || !screen ||
        flights_.inProgress() >= mostFlights) {
        land(item);
        return;
    }
    const double side = std::max(from.width, from.height) * screen->backingScaleFactor;
    auto picture = desktop_.thumbnails.imageThumb(
        item->path, static_cast<int>(std::round(std::clamp(side, fewestPixels, mostPixels))));
    if (!picture) {
        land(item);
        return;
    }
    const Rect panel = line_.panelFrame();
    const Rect to = LineGeometry::cardRect(item->cardSize, item->swing->model().position).offset(panel.x, panel.y);
    flights_.flyImage({.image = std::move(picture),
                       .from = from,
                       .to = to,
                       .tilt = item->tilt,
                       .screen = screen,
                       .dark = RBIsDark(desktop_)},
                      [this, item] { land(item); });
}

void LineCaptures::land(const RBPegItemRef& item) {
    if (!item->flying) {
        return;
    }
    item->flying = false;
    RBAnimateLayerValue(item->swing, KeyPath::Opacity, 1.0, landing);
    line_.nudge(*item, 2.2);
}

} // namespace rb
