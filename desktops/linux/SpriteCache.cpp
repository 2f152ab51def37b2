#include "desktops/linux/SpriteCache.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

// What shows the layer: its superlayer, or the layer that it masks.
const Layer* above(const Layer& layer) {
    return layer.superlayer() ? layer.superlayer() : layer.masked();
}

} // namespace

const SpriteCache::Sprite* SpriteCache::find(const Layer& layer, double pixelsPerPoint) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.pixelsPerPoint == pixelsPerPoint && entry.layer.lock().get() == &layer;
    });
    return found == entries_.end() ? nullptr : &found->sprite;
}

const SpriteCache::Sprite& SpriteCache::keep(const std::shared_ptr<const Layer>& layer, double pixelsPerPoint,
                                             Sprite sprite) {
    std::erase_if(entries_, [&](const Entry& entry) {
        const auto known = entry.layer.lock();
        return !known || known == layer;
    });
    ++made_;
    return entries_.emplace_back(Entry{layer, pixelsPerPoint, std::move(sprite)}).sprite;
}

void SpriteCache::layerChanged(const Layer& layer) {
    if (entries_.empty()) {
        return;
    }
    std::erase_if(entries_, [&](const Entry& entry) { return entry.layer.lock().get() == &layer; });
    layerMoved(layer);
}

void SpriteCache::layerMoved(const Layer& layer) {
    for (const Layer* up = above(layer); up && !entries_.empty(); up = above(*up)) {
        std::erase_if(entries_, [up](const Entry& entry) { return entry.layer.lock().get() == up; });
    }
}

void SpriteCache::forgetTree(const Layer& root) {
    std::erase_if(entries_, [&](const Entry& entry) {
        const auto layer = entry.layer.lock();
        const Layer* top = layer.get();
        while (top && above(*top)) {
            top = above(*top);
        }
        return top == nullptr || top == &root;
    });
}

} // namespace rb
