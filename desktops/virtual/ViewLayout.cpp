#include "desktops/virtual/ViewLayout.h"

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

constexpr Font buttonFont{.size = 13, .weight = FontWeight::Regular};
constexpr double buttonPadding = 14;
constexpr double buttonHeight = 24;

// A stack without saying twice what holds across and along: along is its direction, from the top or the left.
struct Axis {
    bool vertical;
    double along(Size size) const { return vertical ? size.height : size.width; }
    double across(Size size) const { return vertical ? size.width : size.height; }
    Size size(double alongLength, double acrossLength) const {
        return vertical ? Size{acrossLength, alongLength} : Size{alongLength, acrossLength};
    }
};

Size inner(Size outer, const Insets& insets) {
    return {std::max(outer.width - insets.left - insets.right, 0.0),
            std::max(outer.height - insets.top - insets.bottom, 0.0)};
}

Size outer(Size content, const Insets& insets) {
    return {content.width + insets.left + insets.right, content.height + insets.top + insets.bottom};
}

double gapAfter(const StackView& stack, std::size_t index) {
    return index + 1 < stack.children.size() ? stack.children[index].spacingAfter.value_or(stack.spacing) : 0;
}

bool takesSpace(const View& view) {
    return view.expands || std::holds_alternative<SpacerView>(view.content);
}

// The length of each child of a stack that divides the width equally.
double equalShare(const StackView& stack, double width) {
    double gaps = 0;
    for (std::size_t i = 0; i < stack.children.size(); ++i) {
        gaps += gapAfter(stack, i);
    }
    return std::max(width - gaps, 0.0) / static_cast<double>(stack.children.size());
}

struct Fitting {
    double width;
    const TextMeter& meter;

    Size operator()(const LabelView& label) const {
        const Size line = meter.textSize(label.text, label.font);
        if (!label.wraps || line.width <= width || width <= 0) {
            return line;
        }
        return {width, std::ceil(line.width / width) * line.height};
    }
    Size operator()(const ButtonView& button) const {
        return {meter.textSize(button.title, buttonFont).width + 2 * buttonPadding, buttonHeight};
    }
    Size operator()(const CheckBoxView& box) const {
        return {meter.textSize(box.title, buttonFont).width + buttonHeight, buttonHeight};
    }
    Size operator()(const PopUpView& popUp) const {
        double widest = 0;
        for (const std::string& item : popUp.items) {
            widest = std::max(widest, meter.textSize(item, buttonFont).width);
        }
        return {widest + 3 * buttonPadding, buttonHeight};
    }
    // As high as its content, where it may be.
    Size operator()(const ScrollView& scroll) const {
        return scroll.child.empty() ? Size{} : fittingSize(scroll.child.front(), width, meter);
    }
    Size operator()(const ImageView& image) const {
        const auto* symbol = std::get_if<Symbol>(&image.image);
        return image.size == Size{} && symbol ? meter.symbolSize(*symbol) : image.size;
    }
    Size operator()(const SpacerView& /*spacer*/) const { return {}; }
    Size operator()(const StackView& stack) const {
        const Axis axis{stack.orientation == Orientation::Vertical};
        const double available = inner({width, 0}, stack.insets).width;
        const bool equally = stack.distribution == StackDistribution::FillEqually && !axis.vertical;
        double along = 0;
        double across = 0;
        for (std::size_t i = 0; i < stack.children.size(); ++i) {
            const Size child =
                fittingSize(stack.children[i], equally ? equalShare(stack, available) : available, meter);
            along += axis.along(child) + gapAfter(stack, i);
            across = std::max(across, axis.across(child));
        }
        return outer(axis.size(along, across), stack.insets);
    }
    Size operator()(const BoxView& box) const {
        if (box.child.empty()) {
            return outer({}, box.insets);
        }
        return outer(fittingSize(box.child.front(), inner({width, 0}, box.insets).width, meter), box.insets);
    }
};

class Layouter {
public:
    Layouter(const TextMeter& meter, const ScrollOffsets& offsets, std::vector<PlacedView>& placed)
        : meter_(meter)
        , offsets_(offsets)
        , placed_(placed) {}

    void place(const View& view, const ViewPath& path, const Rect& frame) {
        placed_.push_back({&view, path, frame});
        if (const auto* stack = std::get_if<StackView>(&view.content)) {
            placeStack(*stack, path, frame);
        } else if (const auto* box = std::get_if<BoxView>(&view.content)) {
            placeBox(*box, path, frame);
        } else if (const auto* scroll = std::get_if<ScrollView>(&view.content); scroll && !scroll->child.empty()) {
            const View& child = scroll->child.front();
            const double height = std::max(fittingSize(child, frame.width, meter_).height, frame.height);
            const auto offset = offsets_.find(view.identifier);
            const double most = height - frame.height;
            const double down = offset != offsets_.end() ? std::clamp(offset->second, 0.0, most) : 0;
            place(child, childPath(path, 0), {frame.x, frame.maxY() - height + down, frame.width, height});
        }
    }

private:
    static ViewPath childPath(ViewPath path, std::size_t index) {
        path.push_back(index);
        return path;
    }

    void placeStack(const StackView& stack, const ViewPath& path, const Rect& frame) {
        const Axis axis{stack.orientation == Orientation::Vertical};
        const Size area = inner(frame.size(), stack.insets);
        const bool equally = stack.distribution == StackDistribution::FillEqually && !axis.vertical;
        std::vector<Size> sizes;
        double used = 0;
        double spacers = 0;
        for (std::size_t i = 0; i < stack.children.size(); ++i) {
            sizes.push_back(
                fittingSize(stack.children[i], equally ? equalShare(stack, area.width) : area.width, meter_));
            if (equally) {
                sizes.back().width = equalShare(stack, area.width);
            } else if (takesSpace(stack.children[i])) {
                sizes.back() = axis.size(0, axis.across(sizes.back()));
                spacers += 1;
            }
            used += axis.along(sizes.back()) + gapAfter(stack, i);
        }
        const double share = spacers > 0 ? std::max(axis.along(area) - used, 0.0) / spacers : 0;
        double offset = 0;
        for (std::size_t i = 0; i < stack.children.size(); ++i) {
            const bool spacer = !equally && takesSpace(stack.children[i]);
            const double along = axis.along(sizes[i]) + (spacer ? share : 0);
            const double natural = std::min(axis.across(sizes[i]), axis.across(area));
            const bool fills = stack.alignment == StackAlignment::Fill || stack.children[i].fillsBreadth;
            const double across = fills ? axis.across(area) : natural;
            const double aside = stack.alignment == StackAlignment::Center ? (axis.across(area) - across) / 2 : 0;
            const Size size = axis.size(along, across);
            const double left = frame.x + stack.insets.left + (axis.vertical ? aside : offset);
            const double top = frame.maxY() - stack.insets.top - (axis.vertical ? offset : aside);
            place(stack.children[i], childPath(path, i), {left, top - size.height, size.width, size.height});
            offset += along + gapAfter(stack, i);
        }
    }

    void placeBox(const BoxView& box, const ViewPath& path, const Rect& frame) {
        if (box.child.empty()) {
            return;
        }
        const Size area = inner(frame.size(), box.insets);
        Rect child{frame.x + box.insets.left, frame.y + box.insets.bottom, area.width, area.height};
        if (box.placement == BoxContentPlacement::Center) {
            const Size fitting = fittingSize(box.child.front(), area.width, meter_);
            const double width = std::min(fitting.width, area.width);
            child = {child.midX() - width / 2, child.midY() - fitting.height / 2, width, fitting.height};
        }
        place(box.child.front(), childPath(path, 0), child);
    }

    const TextMeter& meter_;
    const ScrollOffsets& offsets_;
    std::vector<PlacedView>& placed_;
};

} // namespace

const std::vector<View>& childrenOf(const View& view) {
    static const std::vector<View> none;
    if (const auto* stack = std::get_if<StackView>(&view.content)) {
        return stack->children;
    }
    if (const auto* box = std::get_if<BoxView>(&view.content)) {
        return box->child;
    }
    if (const auto* scroll = std::get_if<ScrollView>(&view.content)) {
        return scroll->child;
    }
    return none;
}

const View* viewAt(const View& root, const ViewPath& path) {
    const View* view = &root;
    for (const std::size_t index : path) {
        const auto& children = childrenOf(*view);
        if (index >= children.size()) {
            return nullptr;
        }
        view = &children[index];
    }
    return view;
}

Size fittingSize(const View& view, double availableWidth, const TextMeter& meter) {
    const Size asked = std::visit(Fitting{view.width.value_or(availableWidth), meter}, view.content);
    return {view.width.value_or(asked.width), view.height.value_or(asked.height)};
}

std::vector<PlacedView> layOut(const View& root, Size area, const TextMeter& meter, const ScrollOffsets& offsets) {
    std::vector<PlacedView> placed;
    Layouter(meter, offsets, placed).place(root, {}, {0, 0, area.width, area.height});
    return placed;
}

} // namespace rb
