#include "motion/Layer.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

double progressOf(const PropertyAnimation& part, double elapsed, double fraction) {
    if (const auto* spring = std::get_if<Spring>(&part.pacing)) {
        // A spring is nearly there when its time is over; an animation that holds its end is there.
        return fraction >= 1 ? 1 : spring->at(elapsed);
    }
    return std::get<TimingCurve>(part.pacing).at(fraction);
}

void apply(const Animation& animation, double duration, double sinceBegin, LayerModel& model) {
    const double fraction = duration > 0 ? std::min(1.0, sinceBegin / duration) : 1;
    const double paced = animation.groupTiming.at(fraction);
    for (const PropertyAnimation& part : animation.parts) {
        LayerValue value = interpolate(part.from, part.to, progressOf(part, paced * duration, paced));
        if (part.additive) {
            value = sum(model.value(part.keyPath), value);
        }
        model.setValue(part.keyPath, value);
    }
}

void takeLater(std::optional<double>& latest, std::optional<double> time) {
    if (time && (!latest || *time > *latest)) {
        latest = time;
    }
}

void takeEarlier(std::optional<double>& earliest, std::optional<double> time) {
    if (time && (!earliest || *time < *earliest)) {
        earliest = time;
    }
}

} // namespace

// A completion on its way out. It owns all it needs, because the layer may die in an earlier one.
struct Layer::Due {
    double end = 0;
    std::function<void(bool finished)> completion;

    static void tell(const std::vector<Due>& all, bool finished) {
        for (const Due& due : all) {
            if (due.completion) {
                due.completion(finished);
            }
        }
    }
};

std::shared_ptr<Layer> Layer::create() {
    return std::shared_ptr<Layer>(new Layer);
}

Layer::~Layer() {
    for (const auto& sublayer : sublayers_) {
        sublayer->superlayer_ = nullptr;
        sublayer->hostChanged(nullptr);
    }
    if (mask_) {
        mask_->masked_ = nullptr;
        mask_->hostChanged(nullptr);
    }
}

LayerModel& Layer::change() {
    noteChange();
    return model_;
}

void Layer::noteChange() {
    if (host_) {
        host_->layerChanged(*this);
    }
}

void Layer::addSublayer(const std::shared_ptr<Layer>& layer) {
    const auto kept = layer; // the argument may live in the list that detach() changes
    kept->detach();
    noteChange();
    sublayers_.push_back(kept);
    kept->superlayer_ = this;
    kept->hostChanged(host_);
}

void Layer::detach() {
    if (superlayer_) {
        superlayer_->noteChange();
        std::erase_if(superlayer_->sublayers_, [this](const auto& sublayer) { return sublayer.get() == this; });
        superlayer_ = nullptr;
    }
}

void Layer::removeFromSuperlayer() {
    if (!superlayer_) {
        return;
    }
    const auto own = std::find_if(superlayer_->sublayers_.begin(), superlayer_->sublayers_.end(),
                                  [this](const auto& sublayer) { return sublayer.get() == this; });
    const auto kept = *own; // the tree may hold the only reference
    std::vector<Due> completions;
    if (host_) {
        takeAllOfSubtree(completions);
    }
    detach();
    hostChanged(nullptr);
    Due::tell(completions, false);
}

void Layer::setMask(std::shared_ptr<Layer> mask) {
    if (mask == mask_) {
        return;
    }
    noteChange();
    std::vector<Due> completions;
    const auto old = std::exchange(mask_, std::move(mask));
    if (old) {
        old->masked_ = nullptr;
        if (old->host_) {
            old->takeAllOfSubtree(completions);
        }
        old->hostChanged(nullptr);
    }
    if (mask_) {
        mask_->masked_ = this;
        mask_->hostChanged(host_);
    }
    Due::tell(completions, false);
}

void Layer::setHost(LayerHost* host) {
    hostChanged(host);
    noteChange();
}

void Layer::hostChanged(LayerHost* host) {
    host_ = host;
    if (host) {
        for (auto& [key, running] : animations_) {
            if (!running.begin) {
                running.begin = host->mediaTime();
            }
        }
    }
    for (const auto& sublayer : sublayers_) {
        sublayer->hostChanged(host);
    }
    if (mask_) {
        mask_->hostChanged(host);
    }
}

void Layer::addAnimation(const std::string& key, Animation animation) {
    Running running;
    running.duration = animation.resolvedDuration();
    running.begin = animation.beginTime;
    if (!running.begin && host_) {
        running.begin = host_->mediaTime();
    }
    running.animation = std::move(animation);
    running.order = nextOrder_++;
    const Running replaced = std::exchange(animations_[key], std::move(running));
    if (host_) {
        host_->animationAdded(*this, key);
    }
    // Last, because it may do anything, also destroy this layer.
    if (replaced.animation.completion) {
        replaced.animation.completion(false);
    }
}

void Layer::removeAnimation(const std::string& key) {
    endAnimation(key, false);
}

void Layer::endAnimation(const std::string& key, bool finished) {
    const auto found = animations_.find(key);
    if (found == animations_.end()) {
        return;
    }
    const std::string kept = key; // the argument may be the map's own
    const auto completion = std::exchange(found->second.animation.completion, nullptr);
    if (finished && found->second.animation.holdsAtEnd) {
        found->second.ended = true;
    } else {
        animations_.erase(found);
        if (host_) {
            host_->animationRemoved(*this, kept);
        }
    }
    if (completion) {
        completion(finished);
    }
}

void Layer::removeAllAnimations() {
    std::vector<Due> completions;
    takeAll(completions);
    Due::tell(completions, false);
}

void Layer::takeAll(std::vector<Due>& completions) {
    for (const Running* running : runningInOrder()) {
        completions.push_back({0, running->animation.completion});
    }
    const auto gone = std::exchange(animations_, {});
    for (const auto& entry : gone) {
        if (host_) {
            host_->animationRemoved(*this, entry.first);
        }
    }
}

void Layer::takeAllOfSubtree(std::vector<Due>& completions) {
    takeAll(completions);
    for (const auto& sublayer : sublayers_) {
        sublayer->takeAllOfSubtree(completions);
    }
    if (mask_) {
        mask_->takeAllOfSubtree(completions);
    }
}

const Animation* Layer::animation(const std::string& key) const {
    const auto found = animations_.find(key);
    return found == animations_.end() ? nullptr : &found->second.animation;
}

std::vector<const Layer::Running*> Layer::runningInOrder() const {
    std::vector<const Running*> running;
    running.reserve(animations_.size());
    for (const auto& entry : animations_) {
        running.push_back(&entry.second);
    }
    std::sort(running.begin(), running.end(), [](const Running* a, const Running* b) { return a->order < b->order; });
    return running;
}

std::vector<std::string> Layer::animationKeys() const {
    std::vector<std::pair<unsigned long, std::string>> ordered;
    for (const auto& [key, running] : animations_) {
        ordered.emplace_back(running.order, key);
    }
    std::sort(ordered.begin(), ordered.end());
    std::vector<std::string> keys;
    keys.reserve(ordered.size());
    for (auto& entry : ordered) {
        keys.push_back(std::move(entry.second));
    }
    return keys;
}

std::optional<double> Layer::animationBegin(const std::string& key) const {
    const auto found = animations_.find(key);
    return found == animations_.end() ? std::nullopt : found->second.begin;
}

LayerModel Layer::presentation(double mediaTime) const {
    LayerModel shown = model_;
    for (const Running* running : runningInOrder()) {
        if (!running->begin || mediaTime < *running->begin) {
            continue;
        }
        const double sinceBegin = mediaTime - *running->begin;
        if (running->ended) {
            apply(running->animation, 0, 0, shown);
        } else if (mediaTime < running->end() || running->animation.holdsAtEnd) {
            apply(running->animation, running->duration, sinceBegin, shown);
        }
    }
    return shown;
}

LayerModel Layer::presentation() const {
    return host_ ? presentation(host_->mediaTime()) : model_;
}

std::optional<double> Layer::movesUntil(double mediaTime) const {
    std::optional<double> latest;
    for (const auto& [key, running] : animations_) {
        if (!running.ended && running.begin && running.end() > mediaTime) {
            takeLater(latest, running.end());
        }
    }
    for (const auto& sublayer : sublayers_) {
        takeLater(latest, sublayer->movesUntil(mediaTime));
    }
    if (mask_) {
        takeLater(latest, mask_->movesUntil(mediaTime));
    }
    return latest;
}

std::optional<double> Layer::nextEnd(double mediaTime) const {
    std::optional<double> earliest;
    for (const auto& [key, running] : animations_) {
        if (!running.ended && running.begin && running.end() > mediaTime) {
            takeEarlier(earliest, running.end());
        }
    }
    for (const auto& sublayer : sublayers_) {
        takeEarlier(earliest, sublayer->nextEnd(mediaTime));
    }
    if (mask_) {
        takeEarlier(earliest, mask_->nextEnd(mediaTime));
    }
    return earliest;
}

void Layer::takeDue(double mediaTime, std::vector<Due>& due) {
    for (const std::string& key : animations_.empty() ? std::vector<std::string>{} : animationKeys()) {
        Running& running = animations_.find(key)->second;
        if (running.ended || !running.begin || running.end() > mediaTime) {
            continue;
        }
        due.push_back({running.end(), std::exchange(running.animation.completion, nullptr)});
        if (running.animation.holdsAtEnd) {
            running.ended = true;
            continue;
        }
        animations_.erase(key);
        if (host_) {
            host_->animationRemoved(*this, key);
        }
    }
    for (const auto& sublayer : sublayers_) {
        sublayer->takeDue(mediaTime, due);
    }
    if (mask_) {
        mask_->takeDue(mediaTime, due);
    }
}

void Layer::endDueAnimations(double mediaTime) {
    std::vector<Due> due;
    takeDue(mediaTime, due);
    std::stable_sort(due.begin(), due.end(), [](const Due& a, const Due& b) { return a.end < b.end; });
    Due::tell(due, true);
}

void RBAnimateLayerValue(const std::shared_ptr<Layer>& layer, KeyPath keyPath, const LayerValue& value,
                         double duration) {
    if (!layer) {
        return;
    }
    const LayerValue start = layer->presentation().value(keyPath);
    layer->change().setValue(keyPath, value);
    layer->addAnimation("rb." + std::string(keyPathName(keyPath)),
                        Animation::basic(keyPath, start, value, duration, RBEaseOut));
}

} // namespace rb
