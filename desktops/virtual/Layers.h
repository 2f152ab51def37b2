#pragma once

#include "desktops/virtual/RunLoop.h"
#include "motion/Layer.h"

#include <memory>
#include <vector>

namespace rb {

// Shows trees of layers without drawing them: their animations begin and end on the virtual clock, in one order
// with the timers. What a tree looks like at the present time is asked of Layer::presentation().
class VirtualLayers final : public LayerHost, private VirtualRunLoop::Process {
public:
    explicit VirtualLayers(VirtualRunLoop& loop);

    // The tree is on the screen, or off it. Each root counts once.
    void show(const std::shared_ptr<Layer>& root);
    void hide(const std::shared_ptr<Layer>& root);
    // How often something shown changed; a still picture doesn't.
    unsigned long changes() const { return changes_; }

    double mediaTime() const override { return loop_.now(); }
    void layerChanged(Layer& /*layer*/) override { ++changes_; }
    void animationAdded(Layer& /*layer*/, const std::string& /*key*/) override { ++changes_; }
    void animationRemoved(Layer& /*layer*/, const std::string& /*key*/) override { ++changes_; }

private:
    std::optional<double> nextAfter(double time) const override;
    void happen(double time) override;

    VirtualRunLoop& loop_;
    std::vector<std::shared_ptr<Layer>> roots_;
    unsigned long changes_ = 0;
    Handle process_;
};

} // namespace rb
