#pragma once

#include "motion/Layer.h"

#include <string>
#include <vector>

namespace rb {

// A host whose clock the test sets, and which writes down what it is told.
class TestHost final : public LayerHost {
public:
    double time = 100;
    std::vector<std::string> told;

    double mediaTime() const override { return time; }
    void layerChanged(Layer& layer) override { changed = &layer; }
    void animationAdded(Layer& /*layer*/, const std::string& key) override { told.push_back("+" + key); }
    void animationRemoved(Layer& /*layer*/, const std::string& key) override { told.push_back("-" + key); }

    Layer* changed = nullptr;
};

} // namespace rb
