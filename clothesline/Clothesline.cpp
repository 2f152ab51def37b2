#include "clothesline/Clothesline.h"

#include "app/DefaultsKeys.h"
#include "clothesline/LineGeometry.h"
#include "platform/Screens.h"
#include "platform/Sounds.h"
#include "platform/UserDefaults.h"

#include <utility>

namespace rb {

RBClothesline::RBClothesline(const Desktop& desktop, Toasts& toasts)
    : desktop_(desktop)
    , transit_(*this)
    , actions_(desktop, *this, toasts)
    , cardMenu_(*this)
    , quickLook_(desktop, *this)
    , dragOut_(desktop, *this)
    , reorder_(desktop, *this)
    , folderDrops_(desktop, *this)
    , input_(*this)
    , lineMenu_(desktop, *this, toasts)
    , catcher_(desktop, *this)
    , items_(desktop, *this)
    , motion_(desktop, *this)
    , fall_(desktop)
    , panel_(desktop, *this)
    , tick_(desktop, *this)
    , captures_(desktop, *this, toasts)
    , later_(desktop.runLoop) {
    desktop.userDefaults.registerDefaults({{DefaultsKey::ClotheslineScreenshots, true},
                                           {DefaultsKey::ClotheslineHoverReveal, true},
                                           {DefaultsKey::ClotheslineDragReveal, true},
                                           {DefaultsKey::ClotheslineSound, true}});
}

RBClothesline::~RBClothesline() = default;

void RBClothesline::start() {
    if (std::exchange(started_, true)) {
        return;
    }
    if (!panel_.isBuilt()) {
        panel_.buildPanel(input_);
        panel_.placeOnScreen(std::nullopt);
        items_.restore();
    }
    tick_.start();
    screensWatch_ = desktop_.screens.onChange([this] {
        panel_.screensChanged();
        tick_.screensChanged();
    });
    captures_.start();
    motion_.scheduleBreeze();
}

void RBClothesline::stop() {
    if (!std::exchange(started_, false)) {
        return;
    }
    setRevealed(false);
    motion_.stopBreeze();
    tick_.stop();
    screensWatch_.reset();
    captures_.stop();
}

bool RBClothesline::setting(const std::string& key) const {
    return desktop_.userDefaults.boolForKey(key);
}

void RBClothesline::play(const std::string& name, double volume) const {
    if (setting(DefaultsKey::ClotheslineSound)) {
        desktop_.sounds.play(name, volume);
    }
}

void RBClothesline::playTrash() const {
    if (setting(DefaultsKey::ClotheslineSound)) {
        desktop_.sounds.playTrash();
    }
}

std::size_t RBClothesline::capacity() const {
    return LineGeometry::capacity(width());
}

void RBClothesline::setRevealed(bool revealed) {
    if (!revealed && this->revealed()) {
        tick_.pinned = false;
        tick_.peekUntil.reset();
    }
    panel_.setRevealed(revealed);
    if (revealed) {
        tick_.wake();
    }
}

void RBClothesline::hangFiles(const std::vector<std::string>& paths) {
    constexpr double peekTime = 2.5;
    if (paths.empty()) {
        return;
    }
    if (!revealed()) {
        placeOnScreen(std::nullopt);
    }
    setPeekUntil(desktop_.runLoop.now() + peekTime);
    setRevealed(true);
    hangOneByOne(paths);
}

void RBClothesline::hangOneByOne(const std::vector<std::string>& paths) {
    constexpr double step = 0.08;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        later_.after(static_cast<double>(i) * step,
                     [this, path = paths[i], first = i == 0] { hangURL(path, {.quietly = !first, .animated = true}); });
    }
}

void RBClothesline::updateHint() {
    if (!items().empty()) {
        panel_.showHint({});
        return;
    }
    panel_.showHint(dragActive() ? "松手，挂到晾衣绳上" : "把文件、文件夹或图片拖到屏幕顶部");
}

void RBClothesline::fall(RBPegItem& item) {
    const Rect frame = panelFrame();
    const Point hangs = item.swing->presentation().position;
    fall_.fall(item, {frame.x + hangs.x, frame.y + hangs.y}, panelScreen(), scale());
}

void RBClothesline::showPill(const RBPegItemRef& item) {
    RBAnimateLayerValue(item->pill, KeyPath::Opacity, 1.0, 0.2);
    Animation drop = Animation::basic(KeyPath::PositionY, 4.0, 0.0, 0.2, RBEaseOut);
    drop.parts.front().additive = true;
    item->pill->addAnimation("rb.pill", std::move(drop));
    const std::uint64_t generation = ++item->pillGeneration;
    later_.after(1.2, [weak = std::weak_ptr<RBPegItem>(item), generation] {
        const RBPegItemRef copied = weak.lock();
        if (copied && copied->pillGeneration == generation) {
            RBAnimateLayerValue(copied->pill, KeyPath::Opacity, 0.0, 0.25);
        }
    });
}

} // namespace rb
