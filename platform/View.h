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

enum class TextColor { Label, SecondaryLabel, TertiaryLabel, SystemGreen, SystemBlue };

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
    // Without a border title and image stand alone, on whatever is behind, and start at the left edge.
    bool bordered = true;
    // Of title and image in a button without a border.
    TextColor contentColor = TextColor::Label;
    // A bezel in the system's blue.
    bool prominent = false;
};

struct CheckBoxView {
    std::string title = {};
    bool on = false;
    std::function<void(bool on)> action = {};
};

// A button that shows the selected one of its items and lets the user select another.
struct PopUpView {
    std::vector<std::string> items = {};
    // Nothing: the first, when there are items.
    std::optional<std::size_t> selected = std::nullopt;
    bool enabled = true;
    // The user selected an item, which the button then shows by itself.
    std::function<void(std::size_t index)> selectionChanged = {};
};

struct ImageView {
    Image image = {};
    Size size = {};
};

enum class Orientation { Horizontal, Vertical };
// Across the stack's direction. Fill stretches children to the whole breadth.
enum class StackAlignment { Leading, Center, Fill };
// Along it. FillEqually gives every child the same length.
enum class StackDistribution { Natural, FillEqually };

struct StackView {
    Orientation orientation = Orientation::Vertical;
    StackAlignment alignment = StackAlignment::Leading;
    StackDistribution distribution = StackDistribution::Natural;
    double spacing = 0;
    Insets insets = {};
    std::vector<View> children; // no initialiser: Clang would need the whole View here
};

// Takes the space that the other children of its stack leave.
struct SpacerView {};

// Shows the part of its child that fits and lets the user scroll up and down. The child is as wide as the area.
struct ScrollView {
    std::vector<View> child; // at most one
};

// What a box is made of, where the system has materials; a plain colour of that purpose elsewhere.
enum class Material { None, Sidebar };

enum class BoxContentPlacement { Fill, Center };

// A layer-backed area around one child (or none), which may take the mouse and the keyboard. The layer belongs to
// the product and is shown behind the child; the desktop keeps its bounds equal to the area.
struct BoxView {
    std::shared_ptr<Layer> layer = {};
    Insets insets = {};
    BoxContentPlacement placement = BoxContentPlacement::Fill;
    Material material = Material::None;
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

using ViewContent =
    std::variant<LabelView, ButtonView, ImageView, StackView, SpacerView, BoxView, ScrollView, CheckBoxView, PopUpView>;

struct View {
    ViewContent content = {};
    std::string identifier = {}; // how the product names it later (first responder) and tests find it
    std::optional<double> width = std::nullopt;
    std::optional<double> height = std::nullopt;
    // Space to the next child of the stack, instead of the stack's spacing.
    std::optional<double> spacingAfter = std::nullopt;
    // Along its stack it takes the space that the others leave, as a spacer does.
    bool expands = false;
    // Across its stack it takes the whole breadth, whatever the stack's alignment.
    bool fillsBreadth = false;
    std::string toolTip = {};
};

// The first view of the tree with that identifier, or null.
const View* findView(const View& root, const std::string& identifier);

} // namespace rb
