#pragma once

#include "motion/Animation.h"
#include "motion/Color.h"
#include "motion/Font.h"
#include "motion/Geometry.h"
#include "motion/Image.h"
#include "motion/Path.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// Retained layers: a tree of rectangles with Core Animation's geometry (y grows upwards, a layer is placed by
// its anchor point, transforms turn about the anchor). Changing a layer never animates by itself; animations
// are added under string keys and never touch the model. Main thread only.
namespace rb {

class Layer;

enum class ContentsGravity { Resize, ResizeAspect, ResizeAspectFill, Center };
enum class LineCap { Butt, Round };
enum class TextAlignment { Left, Center, Right };
enum class Truncation { None, End, Middle };

// What a layer is besides a rectangle.
struct ShapeContent {
    Path path = {};
    std::optional<Color> fillColor = {};
    std::optional<Color> strokeColor = {};
    double lineWidth = 1;
    LineCap lineCap = LineCap::Butt;
    friend bool operator==(const ShapeContent&, const ShapeContent&) = default;
};
struct GradientContent {
    std::vector<Color> colors = {};
    std::vector<double> locations = {}; // 0…1, one per colour; empty: evenly spread
    Point startPoint{0.5, 0};           // in unit coordinates of the bounds
    Point endPoint{0.5, 1};
    friend bool operator==(const GradientContent&, const GradientContent&) = default;
};
struct TextContent {
    std::string text = {}; // UTF-8
    Font font = {};
    Color color = {};
    TextAlignment alignment = TextAlignment::Center;
    Truncation truncation = Truncation::None;
    friend bool operator==(const TextContent&, const TextContent&) = default;
};
using LayerContent = std::variant<std::monostate, ShapeContent, GradientContent, TextContent>;

// Only the transforms the product needs: turn about the anchor, scale, then shift.
struct LayerTransform {
    Point translation;
    double rotation = 0; // radians, counter-clockwise
    double scale = 1;
    friend bool operator==(const LayerTransform&, const LayerTransform&) = default;
};

// Every property of a layer by value; lengths in points.
struct LayerModel {
    Rect bounds;
    Point position; // of the anchor, in the superlayer's coordinates
    Point anchorPoint{0.5, 0.5};
    double zPosition = 0;
    LayerTransform transform;
    double opacity = 1;
    bool hidden = false;
    bool masksToBounds = false;
    std::optional<Color> backgroundColor;
    double cornerRadius = 0;
    bool continuousCorners = false;
    double borderWidth = 0;
    Color borderColor{0, 0, 0, 1};
    Color shadowColor{0, 0, 0, 1};
    double shadowOpacity = 0;
    double shadowRadius = 3;
    Size shadowOffset{0, -3};
    std::optional<Path> shadowPath; // absent: the shadow of the layer's own rounded rectangle
    Image contents;
    ContentsGravity contentsGravity = ContentsGravity::Resize;
    double contentsScale = 1;
    LayerContent content;

    // Pictures are compared by identity.
    friend bool operator==(const LayerModel&, const LayerModel&) = default;

    // The rectangle in superlayer coordinates without the transform, as in setting a frame.
    Rect frame() const;
    void setFrame(const Rect& frame);
    // The stroke of a layer that shows no shape reads as clear and 0, and can't be set.
    LayerValue value(KeyPath keyPath) const;
    void setValue(KeyPath keyPath, const LayerValue& value);
};

// Where a tree of layers is shown. Commands reach it as they happen; it draws later, at its own pace.
class LayerHost {
public:
    virtual ~LayerHost() = default;
    // Seconds on the media clock (the run loop's monotonic clock).
    virtual double mediaTime() const = 0;
    // Model, mask or sublayers of the layer are about to change, so what was shown can still be read; the new state
    // is complete when the current callback has returned.
    virtual void layerChanged(Layer& layer) = 0;
    // Also when it replaces the one of that key, which isn't reported as removed.
    virtual void animationAdded(Layer& layer, const std::string& key) = 0;
    virtual void animationRemoved(Layer& layer, const std::string& key) = 0;
};

// Shared: the tree owns its layers and the features keep the ones they move.
class Layer {
public:
    static std::shared_ptr<Layer> create();
    ~Layer();
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;

    const LayerModel& model() const { return model_; }
    // The model for writing. The host is told at once; finish writing within the current callback.
    LayerModel& change();

    // On top of the others. A layer that hangs elsewhere moves here with its running animations.
    void addSublayer(const std::shared_ptr<Layer>& layer);
    // Ends all animations of the subtree, "not finished", when the tree is shown.
    void removeFromSuperlayer();
    Layer* superlayer() const { return superlayer_; }
    const std::vector<std::shared_ptr<Layer>>& sublayers() const { return sublayers_; }
    // Placed in this layer's coordinates; what it covers stays visible. It has no superlayer.
    void setMask(std::shared_ptr<Layer> mask);
    const std::shared_ptr<Layer>& mask() const { return mask_; }
    // The layer whose mask this is, or null.
    Layer* masked() const { return masked_; }

    // Set on the root of a shown tree by the desktop; null takes the tree off. Layers added later follow. Animations
    // keep their time while a tree is off; those that fall due meanwhile end when a host asks for it again.
    void setHost(LayerHost* host);
    LayerHost* host() const { return host_; }

    // Replaces a running animation of the same key, whose completion is told "not finished". On a layer that is
    // not shown the animation waits for a host, which finds it when it first visits the layer. Destroying a layer
    // destroys its animations without telling anyone, like dropping a handle.
    void addAnimation(const std::string& key, Animation animation);
    void removeAnimation(const std::string& key);
    void removeAllAnimations();
    bool hasAnimation(const std::string& key) const { return animations_.contains(key); }
    bool hasAnimations() const { return !animations_.empty(); }
    const Animation* animation(const std::string& key) const;
    std::vector<std::string> animationKeys() const; // in the order they were added
    // The media time at which it began or will begin; absent while it waits for a host and without one of that key.
    std::optional<double> animationBegin(const std::string& key) const;

    // Model plus animations at a media time: a pure function.
    LayerModel presentation(double mediaTime) const;
    // The same at the host's present time; the model when the layer is not shown.
    LayerModel presentation() const;

    // The end of the last animation still running in this subtree, masks included; absent when nothing moves.
    std::optional<double> movesUntil(double mediaTime) const;
    // The earliest end after mediaTime of an animation in this subtree; absent when there is none.
    std::optional<double> nextEnd(double mediaTime) const;
    // Ends every animation of this subtree that is due at mediaTime and then runs the completions in the order
    // of their ends. Completions may add and remove anything.
    void endDueAnimations(double mediaTime);
    // For a host whose system runs the animations itself: this one ended.
    void endAnimation(const std::string& key, bool finished);

private:
    struct Running {
        Animation animation;
        double duration = 0;         // resolved once
        std::optional<double> begin; // media time; absent until hosted
        unsigned long order = 0;
        bool ended = false; // held at its end value
        // One sum for every comparison, so that what begins at this very time doesn't overlap. Once begun.
        double end() const { return *begin + duration; }
    };
    struct Due;
    Layer() = default;
    void hostChanged(LayerHost* host);
    void noteChange();
    void detach();
    void takeAll(std::vector<Due>& completions);
    void takeAllOfSubtree(std::vector<Due>& completions);
    void takeDue(double mediaTime, std::vector<Due>& due);
    std::vector<const Running*> runningInOrder() const;

    LayerModel model_;
    Layer* superlayer_ = nullptr;
    Layer* masked_ = nullptr;
    LayerHost* host_ = nullptr;
    std::vector<std::shared_ptr<Layer>> sublayers_;
    std::shared_ptr<Layer> mask_;
    std::map<std::string, Running> animations_;
    unsigned long nextOrder_ = 0;
};

// Animates one property from where it visibly is to a new model value with RBEaseOut under the key
// "rb." + key path. Nothing for a null layer. Duration in seconds.
void RBAnimateLayerValue(const std::shared_ptr<Layer>& layer, KeyPath keyPath, const LayerValue& value,
                         double duration);

} // namespace rb
