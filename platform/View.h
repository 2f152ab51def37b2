#pragma once

#include "motion/Image.h"
#include "motion/Layer.h"
#include "platform/Keyboard.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What a window shows, as a tree of values. The product renders its state into a tree and hands it over; the
// desktop realises it with its own widgets and keeps those that stay in place (same kind at the same place), so a
// text field or a focused recorder survives a new rendering. Lengths in points. Main thread only.
namespace rb {

struct View;

enum class TextColor { Label, SecondaryLabel, TertiaryLabel };

struct LabelView {
    std::string text = {};
    Font font = {};
    TextColor color = TextColor::Label;
    TextAlignment alignment = TextAlignment::Left;
    bool wraps = false;
};

struct ButtonView {
    std::string title = {};
    std::function<void()> action = {};
    std::string keyEquivalent = {}; // "\r" makes it the default button
    bool enabled = true;
    Image image = {};
};

struct ImageView {
    Image image = {};
    Size size = {};
};

enum class Orientation { Horizontal, Vertical };
// Across the stack's direction. Fill stretches children to the whole breadth.
enum class StackAlignment { Leading, Center, Fill };

struct StackView {
    Orientation orientation = Orientation::Vertical;
    StackAlignment alignment = StackAlignment::Leading;
    double spacing = 0;
    Insets insets = {};
    std::vector<View> children; // no initialiser: Clang would need the whole View here
};

// Takes the space that the other children of its stack leave.
struct SpacerView {};

enum class BoxContentPlacement { Fill, Center };

// A layer-backed area around one child (or none), which may take the mouse and the keyboard. The layer belongs to
// the product and is shown behind the child; the desktop keeps its bounds equal to the area.
struct BoxView {
    std::shared_ptr<Layer> layer = {};
    Insets insets = {};
    BoxContentPlacement placement = BoxContentPlacement::Fill;
    std::vector<View> child; // at most one

    bool acceptsFirstResponder = false;
    std::function<void()> becameFirstResponder = {};
    std::function<void()> resignedFirstResponder = {};
    // With a handler no key press is passed on.
    std::function<void(const KeyEvent&)> keyDown = {};
    // True asks the window to make this area its first responder.
    std::function<bool()> mouseDown = {};
    // While the application is active.
    std::function<void()> mouseEntered = {};
    std::function<void()> mouseExited = {};
    // The appearance changed or the area is first shown: set the layer's look anew.
    std::function<void()> updateLayer = {};
};

using ViewContent = std::variant<LabelView, ButtonView, ImageView, StackView, SpacerView, BoxView>;

struct View {
    ViewContent content = {};
    std::string identifier = {}; // how the product names it later (first responder) and tests find it
    std::optional<double> width = std::nullopt;
    std::optional<double> height = std::nullopt;
    // Space to the next child of the stack, instead of the stack's spacing.
    std::optional<double> spacingAfter = std::nullopt;
    std::string toolTip = {};
};

// The first view of the tree with that identifier, or null.
const View* findView(const View& root, const std::string& identifier);

} // namespace rb
