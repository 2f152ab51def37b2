#include "clothesline/LineItems.h"

#include "app/DefaultsKeys.h"
#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "clothesline/LineGeometry.h"
#include "platform/FileOperations.h"
#include "platform/Files.h"
#include "platform/RandomSource.h"
#include "platform/Thumbnails.h"
#include "platform/UserDefaults.h"

#include <algorithm>

namespace rb {

namespace {

constexpr int imageThumbPixels = 320;
constexpr Size documentThumbSize{60, 60};
constexpr double documentThumbScale = 2;
constexpr double takeDownStep = 0.06;
constexpr double emptyLineDelay = 0.7;

} // namespace

RBPegItemRef LineItems::itemForPath(const std::string& path) const {
    const auto found =
        std::find_if(items_.begin(), items_.end(), [&](const RBPegItemRef& item) { return item->path == path; });
    return found == items_.end() ? nullptr : *found;
}

bool LineItems::contains(const RBPegItem& item) const {
    return std::any_of(items_.begin(), items_.end(),
                       [&](const RBPegItemRef& hanging) { return hanging.get() == &item; });
}

RBPegItemRef LineItems::hang(const std::string& path, HangOptions options) {
    const std::string standardized = standardizedPath(path, desktop_.files.homeDirectory());
    if (standardized.empty() || !desktop_.files.facts(standardized).exists) {
        return nullptr;
    }
    if (const RBPegItemRef hanging = itemForPath(standardized)) {
        line_.nudge(*hanging, 4);
        return nullptr;
    }
    auto item = std::make_shared<RBPegItem>();
    item->path = standardized;
    item->peg.attach(desktop_, line_, item);
    item->tilt = desktop_.random.between(-2.5, 2.5);
    item->flying = options.flying;
    loadThumb(item);
    buildLayersFor(*item, desktop_, line_.scale());

    items_.push_back(item);
    if (options.flying) {
        item->swing->change().opacity = 0;
    }
    // A new card begins at its own place; only the others move to make room.
    item->swing->change().position = LineGeometry::anchor(items_.size() - 1, items_.size(), line_.width());
    line_.hangLayer(item->swing);
    line_.layout({.animated = options.animated && line_.revealed()});
    if (options.animated && !item->flying && line_.revealed()) {
        line_.arrive(*item);
    }
    while (items_.size() > line_.capacity()) {
        letGo(items_.front());
    }
    save();
    line_.updateHint();
    if (!options.quietly) {
        line_.play("Tink", 0.35);
    }
    return item;
}

void LineItems::loadThumb(const RBPegItemRef& item) {
    const FileFacts facts = desktop_.files.facts(item->path);
    item->isFolder = facts.isDirectory && !facts.isPackage;
    std::shared_ptr<const Bitmap> picture;
    if (!facts.isDirectory && facts.isImage) {
        picture = desktop_.thumbnails.imageThumb(item->path, imageThumbPixels);
    }
    item->isImage = picture != nullptr;
    if (picture) {
        item->thumbSize = picture->pixelSize();
        item->thumb = picture;
        return;
    }
    item->thumb = desktop_.thumbnails.iconForFile(item->path);
    if (item->isFolder) {
        return;
    }
    thumbnailRequests_[item.get()] = desktop_.thumbnails.requestDocumentThumbnail(
        item->path, documentThumbSize, documentThumbScale,
        [weak = std::weak_ptr<RBPegItem>(item)](std::shared_ptr<const Bitmap> rendering) {
            if (const RBPegItemRef hanging = weak.lock()) {
                hanging->thumb = std::move(rendering);
                hanging->photo->change().contents = hanging->thumb;
            }
        });
}

void LineItems::remove(const RBPegItemRef& item, RemoveOptions options) {
    const auto found = std::find(items_.begin(), items_.end(), item);
    if (found == items_.end()) {
        return;
    }
    // The caller's reference may be the list's own.
    const RBPegItemRef leaving = item;
    if (options.fall && !leaving->absorbed && !leaving->flying && line_.revealed() && line_.isVisible()) {
        line_.fall(*leaving);
    }
    items_.erase(found);
    line_.itemRemoved(*leaving);
    thumbnailRequests_.erase(leaving.get());
    leaving->swing->removeFromSuperlayer();
    line_.layout({.animated = line_.revealed()});
    save();
    line_.updateHint();
    if (!options.quietly) {
        line_.play("Pop", 0.25);
    }
    if (items_.empty()) {
        lineBecameEmpty();
    }
}

void LineItems::takeDown(const RBPegItemRef& item) {
    if (line_.isInInbox(item->path)) {
        line_.actions().trashItem(item);
        return;
    }
    remove(item, {.quietly = false, .fall = true});
}

void LineItems::letGo(const RBPegItemRef& item) {
    if (line_.isInInbox(item->path) && !item->inTransit) {
        // What the line drops by itself makes no noise, not even about a failure.
        desktop_.fileOperations.trashItem(item->path, {});
    }
    remove(item, {.quietly = true, .fall = line_.revealed()});
}

void LineItems::takeDownAll(const std::vector<RBPegItemRef>& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        later_.after(static_cast<double>(i) * takeDownStep,
                     [this, item = items[i], first = i == 0] { remove(item, {.quietly = !first, .fall = true}); });
    }
}

void LineItems::prune() {
    const std::vector<RBPegItemRef> copy = items_;
    for (const RBPegItemRef& item : copy) {
        // A file on its way takes its card along when it has arrived.
        if (!item->inTransit && !desktop_.files.facts(item->path).exists) {
            remove(item, {.quietly = true, .fall = true});
        }
    }
}

void LineItems::lineBecameEmpty() {
    if (!line_.revealed() || line_.pinned() || line_.dragActive()) {
        return;
    }
    later_.after(emptyLineDelay, [this] {
        if (items_.empty() && !line_.pinned() && !line_.dragActive()) {
            line_.setRevealed(false);
        }
    });
}

void LineItems::save() const {
    PropertyArray paths;
    for (const RBPegItemRef& item : items_) {
        paths.emplace_back(item->path);
    }
    desktop_.userDefaults.setObject(DefaultsKey::ClotheslinePaths, std::move(paths));
}

void LineItems::restore() {
    auto paths = desktop_.userDefaults.stringArrayForKey(DefaultsKey::ClotheslinePaths);
    if (!paths) {
        paths = desktop_.userDefaults.stringArrayForKey(DefaultsKey::FileShelfPaths);
    }
    desktop_.userDefaults.removeObject(DefaultsKey::FileShelfPaths);
    for (const std::string& path : paths.value_or(std::vector<std::string>{})) {
        if (items_.size() >= line_.capacity()) {
            break;
        }
        hang(path, {.quietly = true});
    }
    save();
}

} // namespace rb
