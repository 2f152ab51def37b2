#pragma once

#include "platform/View.h"

#include <memory>

namespace rb {

// The rounded translucent card of the Screens and connections window. It brightens and lifts under the pointer.
// Main thread only.
class RBCardView {
public:
    struct StyleOptions {
        bool animated = false;
    };

    RBCardView();

    // A box with the content in it; it refers to this object, which outlives the window's content.
    View view(View content, const Insets& insets);

    bool hovered() const { return hovered_; }
    void mouseEntered();
    void mouseExited();
    void applyStyle(StyleOptions options);
    const std::shared_ptr<Layer>& layer() const { return layer_; }

private:
    std::shared_ptr<Layer> layer_ = Layer::create();
    bool hovered_ = false;
};

} // namespace rb
