#pragma once

#include "platform/Appearance.h"
#include "platform/View.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace rb {

// A field that turns the next key press into a hot key. It shows the key, or asks for one; its border is green
// while it listens. Every key is recorded, plain letters too, and none is passed on. Main thread only.
class HotKeyRecorderView {
public:
    using RecordHandler =
        std::function<void(std::uint32_t keyCode, std::uint32_t carbonModifiers, const std::string& display)>;

    explicit HotKeyRecorderView(const Appearance& appearance);

    // May be empty.
    RecordHandler recordHandler;
    // The shown text changed: the window should be rendered again.
    std::function<void()> needsRender;

    // Empty shows the placeholder.
    void setDisplayText(const std::string& text);
    // What the label shows.
    const std::string& labelText() const { return labelText_; }

    bool acceptsFirstResponder() const { return true; }
    void becomeFirstResponder();
    void resignFirstResponder();
    void keyDown(const KeyEvent& event);

    // The field as part of a window; it refers to this object, which outlives the window's content.
    View view(const std::string& identifier);
    const std::shared_ptr<Layer>& layer() const { return layer_; }

private:
    void updateLayer();

    const Appearance& appearance_;
    std::shared_ptr<Layer> layer_ = Layer::create();
    std::string labelText_;
    bool showsPlaceholder_ = true;
    bool isFirstResponder_ = false;
};

} // namespace rb
