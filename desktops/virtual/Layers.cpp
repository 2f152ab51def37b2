#include "desktops/virtual/Layers.h"

#include <algorithm>

namespace rb {

VirtualLayers::VirtualLayers(VirtualRunLoop& loop)
    : loop_(loop)
    , process_(loop.addProcess(*this)) {}

void VirtualLayers::show(const std::shared_ptr<Layer>& root) {
    if (std::find(roots_.begin(), roots_.end(), root) == roots_.end()) {
        roots_.push_back(root);
        root->setHost(this);
    }
}

void VirtualLayers::hide(const std::shared_ptr<Layer>& root) {
    const auto kept = root;
    if (std::erase(roots_, kept) > 0) {
        kept->setHost(nullptr);
    }
}

std::optional<double> VirtualLayers::nextAfter(double time) const {
    std::optional<double> next;
    for (const auto& root : roots_) {
        const auto end = root->nextEnd(time);
        if (end && (!next || *end < *next)) {
            next = end;
        }
    }
    return next;
}

void VirtualLayers::happen(double time) {
    const auto roots = roots_; // completions may show and hide others
    for (const auto& root : roots) {
        root->endDueAnimations(time);
    }
}

} // namespace rb
