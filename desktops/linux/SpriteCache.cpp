#include "desktops/linux/SpriteCache.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

// What shows the layer: its superlayer, or the layer that it masks.
const Layer* above(const Layer& layer) {
    return layer.superlayer() ? layer.superlayer() : layer.masked();
}

// The model without what moves the layer as a whole.
LayerModel lookOf(LayerModel model) {
    const LayerModel unmoved;
    model.position = unmoved.position;
    model.anchorPoint = unmoved.anchorPoint;
    model.zPosition = unmoved.zPosition;
    model.transform = unmoved.transform;
    model.opacity = unmoved.opacity;
    model.hidden = unmoved.hidden;
    return model;
}

// The mask, if any, and the sublayers.
std::vector<std::weak_ptr<const Layer>> partsOf(const Layer& layer) {
    std::vector<std::weak_ptr<const Layer>> parts(layer.sublayers().begin(), layer.sublayers().end());
    if (layer.mask()) {
        parts.emplace_back(layer.mask());
    }
    return parts;
}

} // namespace

bool SpriteCache::looksSo(const Layer& layer, const Entry& entry) {
    const auto same = [](const auto& a, const auto& b) {
        const auto part = a.lock();
        return part && part == b.lock();
    };
    const auto parts = partsOf(layer);
    return std::equal(parts.begin(), parts.end(), entry.parts.begin(), entry.parts.end(), same) &&
           lookOf(layer.model()) == entry.look;
}

const SpriteCache::Sprite* SpriteCache::find(const Layer& layer, double pixelsPerPoint) {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.pixelsPerPoint == pixelsPerPoint && entry.layer.lock().get() == &layer;
    });
    if (found == entries_.end()) {
        return nullptr;
    }
    if (std::exchange(found->doubtful, false) && !looksSo(layer, *found)) {
        entries_.erase(found);
        return nullptr;
    }
    return &found->sprite;
}

const SpriteCache::Sprite& SpriteCache::keep(const std::shared_ptr<const Layer>& layer, double pixelsPerPoint,
                                             Sprite sprite) {
    std::erase_if(entries_, [&](const Entry& entry) {
        const auto known = entry.layer.lock();
        return !known || known == layer;
    });
    ++made_;
    return entries_
        .emplace_back(Entry{layer, pixelsPerPoint, std::move(sprite), lookOf(layer->model()), partsOf(*layer)})
        .sprite;
}

void SpriteCache::layerChanged(const Layer& layer) {
    if (entries_.empty()) {
        return;
    }
    for (Entry& entry : entries_) {
        entry.doubtful = entry.doubtful || entry.layer.lock().get() == &layer;
    }
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
