#include "clothesline/CardLayers.h"

#include "platform/Appearance.h"
#include "platform/Files.h"
#include "platform/TextMeter.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace rb {

namespace {

constexpr double swingWidth = 150;
constexpr double cardTop = 14;       // from the anchor down to the card
constexpr double roomBelowCard = 34; // for the copy confirmation
constexpr double framePadding = 4;   // around the picture
constexpr double cardRadius = 16;
constexpr Size documentPicture{112, 92};
constexpr double iconSide = 60;
constexpr Size pegSize{9, 26};
constexpr double captionSize = 11;

Color glassWhite(bool dark, double alpha) {
    return Color::white(dark ? 0.17 : 0.97, alpha);
}

Color inkWhite(bool dark) {
    return Color::white(dark ? 0.95 : 0.12, 1);
}

std::shared_ptr<Layer> layerIn(Layer& parent, const Rect& frame) {
    auto layer = Layer::create();
    layer->change().setFrame(frame);
    parent.addSublayer(layer);
    return layer;
}

void castShadow(LayerModel& model, double opacity, double radius, Size offset) {
    model.shadowColor = {0, 0, 0, 1};
    model.shadowOpacity = opacity;
    model.shadowRadius = radius;
    model.shadowOffset = offset;
}

void setBorder(LayerModel& model, double width, Color color) {
    model.borderWidth = width;
    model.borderColor = color;
}

std::shared_ptr<Layer> makeGlass(Layer& card, bool dark) {
    const Rect bounds = card.model().bounds;
    auto glass = layerIn(card, bounds);
    LayerModel& model = glass->change();
    model.cornerRadius = cardRadius;
    model.continuousCorners = true;
    model.backgroundColor = glassWhite(dark, 0.8);
    setBorder(model, 0.5, Color::white(0, 0.1));
    castShadow(model, 0.18, 10, {0, -5});
    model.shadowPath = Path::roundedRect(bounds, cardRadius);
    return glass;
}

std::shared_ptr<Layer> makePhoto(Layer& card, const RBPegItem& item) {
    const Size size = item.cardSize;
    if (item.isImage) {
        auto photo = layerIn(card, card.model().bounds.inset(framePadding, framePadding));
        LayerModel& model = photo->change();
        model.contents = item.thumb;
        model.contentsGravity = ContentsGravity::ResizeAspectFill;
        model.cornerRadius = cardRadius - framePadding;
        model.continuousCorners = true;
        model.masksToBounds = true;
        setBorder(model, 0.5, Color::white(1, 0.18));
        return photo;
    }
    auto photo = layerIn(card, {(size.width - iconSide) / 2, size.height - 10 - iconSide, iconSide, iconSide});
    LayerModel& model = photo->change();
    model.contents = item.thumb;
    model.contentsGravity = ContentsGravity::ResizeAspect;
    castShadow(model, 0.12, 2, {0, -1});
    return photo;
}

void addNameLabel(Layer& card, const RBPegItem& item, bool dark) {
    const auto label = layerIn(card, {10, 11, item.cardSize.width - 20, 15});
    label->change().content = TextContent{.text = lastPathComponent(item.path),
                                          .font = {.size = captionSize, .weight = FontWeight::Medium},
                                          .color = inkWhite(dark),
                                          .alignment = TextAlignment::Center,
                                          .truncation = Truncation::Middle};
}

// A thin rim of light: a gradient seen only through a stroke along the card's edge.
std::shared_ptr<Layer> makeEdge(Layer& card) {
    constexpr double stroke = 1.5;
    const Rect bounds = card.model().bounds;
    auto edge = layerIn(card, bounds);
    edge->change().content = GradientContent{
        .colors = {Color::white(1, 0.12), Color::white(1, 0.6)}, .startPoint = {0.5, 0}, .endPoint = {0.5, 1}};
    auto mask = Layer::create();
    mask->change().setFrame(bounds);
    mask->change().content =
        ShapeContent{.path = Path::roundedRect(bounds.inset(stroke / 2, stroke / 2), cardRadius - stroke / 2),
                     .strokeColor = Color::white(0, 1),
                     .lineWidth = stroke};
    edge->setMask(std::move(mask));
    return edge;
}

std::shared_ptr<Layer> makeCross(Layer& card, bool dark) {
    auto cross = Layer::create();
    LayerModel& model = cross->change();
    model.bounds = {0, 0, 20, 20};
    model.position = {13, card.model().bounds.height - 13};
    model.cornerRadius = 10;
    model.backgroundColor = glassWhite(dark, 0.92);
    setBorder(model, 0.75, Color::white(1, dark ? 0.2 : 0.6));
    model.contents = Symbol{.name = "xmark", .pointSize = 8, .weight = FontWeight::Bold, .tint = inkWhite(dark)};
    model.contentsGravity = ContentsGravity::Center;
    model.opacity = 0;
    model.transform.scale = 0.6;
    card.addSublayer(cross);
    return cross;
}

} // namespace

bool RBIsDark(const Desktop& desktop) {
    return desktop.appearance.isDark();
}

Size RBPictureSize(const RBPegItem& item) {
    constexpr Size room{136, 104};
    if (!item.isImage) {
        return documentPicture;
    }
    const Size size = item.thumbSize;
    if (size.width <= 0 || size.height <= 0) {
        return room;
    }
    const double k = std::min(room.width / size.width, room.height / size.height);
    return {std::round(k * size.width), std::round(k * size.height)};
}

std::shared_ptr<Layer> RBCapsule(const Desktop& desktop, const std::string& text, double fontSize) {
    const bool dark = RBIsDark(desktop);
    const Font font{.size = fontSize, .weight = FontWeight::Semibold};
    const Size measured = desktop.textMeter.textSize(text, font);
    const Size textSize{std::ceil(measured.width), std::ceil(measured.height)};

    auto capsule = Layer::create();
    LayerModel& model = capsule->change();
    model.bounds = {0, 0, textSize.width + 24, textSize.height + 11};
    model.cornerRadius = model.bounds.height / 2;
    model.backgroundColor = glassWhite(dark, 0.92);
    setBorder(model, 0.75, Color::white(1, dark ? 0.18 : 0.6));
    castShadow(model, 0.16, 6, {0, -2});

    const auto label =
        layerIn(*capsule, {0, (model.bounds.height - textSize.height) / 2, model.bounds.width, textSize.height});
    label->change().content = TextContent{.text = text, .font = font, .color = inkWhite(dark)};
    return capsule;
}

std::shared_ptr<Layer> RBMakeClip() {
    auto clip = Layer::create();
    LayerModel& model = clip->change();
    model.bounds = {0, 0, pegSize.width, pegSize.height};
    model.cornerRadius = 3.5;
    model.zPosition = 1;
    setBorder(model, 0.6, Color::white(1, 0.7));
    castShadow(model, 0.3, 2, {0, -1.5});
    // Shades across like a rounded peg.
    model.content = GradientContent{
        .colors = {Color::white(0.7, 1), Color::white(0.93, 1), Color::white(0.82, 1), Color::white(0.62, 1)},
        .locations = {0, 0.35, 0.65, 1},
        .startPoint = {0, 0.5},
        .endPoint = {1, 0.5}};
    const auto slot = layerIn(*clip, {2, 16.1, 5, 1.4});
    slot->change().cornerRadius = 0.7;
    slot->change().backgroundColor = Color::white(0, 0.32);
    return clip;
}

void RBSetScale(Layer& layer, double scale) {
    layer.change().contentsScale = scale;
    if (layer.mask()) {
        RBSetScale(*layer.mask(), scale);
    }
    for (const auto& sublayer : layer.sublayers()) {
        RBSetScale(*sublayer, scale);
    }
}

void buildLayersFor(RBPegItem& item, const Desktop& desktop, double scale) {
    const bool dark = RBIsDark(desktop);
    const Size picture = RBPictureSize(item);
    item.cardSize = {picture.width + 2 * framePadding, picture.height + 2 * framePadding};
    const double swingHeight = item.cardSize.height + cardTop + roomBelowCard;

    item.swing = Layer::create();
    LayerModel& swing = item.swing->change();
    swing.bounds = {0, 0, swingWidth, swingHeight};
    swing.anchorPoint = {0.5, 1};
    swing.transform.rotation = -item.tilt * std::numbers::pi / 180;

    item.card = Layer::create();
    LayerModel& card = item.card->change();
    card.bounds = {0, 0, item.cardSize.width, item.cardSize.height};
    card.anchorPoint = {0.5, 1};
    card.position = {swingWidth / 2, swingHeight - cardTop};
    item.swing->addSublayer(item.card);

    item.glass = makeGlass(*item.card, dark);
    item.photo = makePhoto(*item.card, item);
    if (!item.isImage) {
        addNameLabel(*item.card, item, dark);
    }
    item.edge = makeEdge(*item.card);
    item.cross = makeCross(*item.card, dark);

    item.pill = RBCapsule(desktop, "✓ 已复制", captionSize);
    item.pill->change().opacity = 0;
    item.pill->change().anchorPoint = {0.5, 1};
    item.pill->change().position = {swingWidth / 2, roomBelowCard - 4};
    item.swing->addSublayer(item.pill);

    const auto clip = RBMakeClip();
    clip->change().setFrame(
        {(swingWidth - pegSize.width) / 2, swingHeight - pegSize.height, pegSize.width, pegSize.height});
    item.swing->addSublayer(clip);
    RBSetScale(*item.swing, scale);
}

void setItemHovered(RBPegItem& item, bool hovered) {
    if (item.hovered == hovered) {
        return;
    }
    constexpr double duration = 0.18;
    item.hovered = hovered;
    applyCardScale(item);
    // The card seems to lift.
    RBAnimateLayerValue(item.glass, KeyPath::ShadowOpacity, hovered ? 0.26 : 0.18, duration);
    RBAnimateLayerValue(item.glass, KeyPath::ShadowRadius, hovered ? 14.0 : 10.0, duration);
    RBAnimateLayerValue(item.glass, KeyPath::ShadowOffset, Size{0, hovered ? -8.0 : -5.0}, duration);
    const bool showsCross = hovered && !item.dragging;
    RBAnimateLayerValue(item.cross, KeyPath::Opacity, showsCross ? 1.0 : 0.0, duration);
    RBAnimateLayerValue(item.cross, KeyPath::Scale, showsCross ? 1.0 : 0.6, duration);
}

void setItemPressed(RBPegItem& item, bool pressed) {
    if (item.pressed != pressed) {
        item.pressed = pressed;
        applyCardScale(item);
    }
}

void setItemInTransit(RBPegItem& item, bool inTransit) {
    item.inTransit = inTransit;
    applyCardOpacity(item);
}

void applyCardOpacity(RBPegItem& item) {
    const bool dim = item.dragging || item.inTransit;
    const double opacity = dim ? 0.45 : 1.0;
    if (item.card->model().opacity != opacity) {
        RBAnimateLayerValue(item.card, KeyPath::Opacity, opacity, dim ? 0.16 : 0.2);
    }
}

void applyCardScale(RBPegItem& item) {
    double scale = 1;
    if (item.dropTarget) {
        scale = 1.1;
    } else if (item.pressed) {
        scale = 0.95;
    } else if (item.hovered && !item.dragging) {
        scale = 1.035;
    }
    const double start = item.card->presentation().transform.scale;
    item.card->change().transform.scale = scale;
    item.card->addAnimation(
        "rb.scale",
        item.pressed ? Animation::basic(KeyPath::Scale, start, scale, 0.45, TimingCurve::easeInEaseOut())
                     : Animation::spring(KeyPath::Scale, start, scale, {.mass = 1, .stiffness = 438, .damping = 25}));
}

} // namespace rb
