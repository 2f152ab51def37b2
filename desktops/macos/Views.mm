#include "desktops/macos/Views.h"

#include "desktops/macos/BoxView.h"
#include "desktops/macos/Bridge.h"

#include <utility>

// Calls a button's action.
@interface RBMacButtonTarget : NSObject
- (void)setAction:(std::function<void()>)action;
- (void)press:(id)sender;
@end

@implementation RBMacButtonTarget {
    std::function<void()> _action;
}

- (void)setAction:(std::function<void()>)action {
    _action = std::move(action);
}

- (void)press:(id)sender {
    const auto action = _action; // it may render the window anew
    if (action) {
        action();
    }
}

@end

// The content of a scroll view, from the top downwards.
@interface RBMacFlippedView : NSView
@end

@implementation RBMacFlippedView

- (BOOL)isFlipped {
    return YES;
}

@end

namespace rb {

namespace {

NSColor* textColor(TextColor color) {
    switch (color) {
    case TextColor::Label:
        return NSColor.labelColor;
    case TextColor::SecondaryLabel:
        return NSColor.secondaryLabelColor;
    case TextColor::TertiaryLabel:
        return NSColor.tertiaryLabelColor;
    case TextColor::SystemGreen:
        return NSColor.systemGreenColor;
    case TextColor::SystemBlue:
        return NSColor.systemBlueColor;
    }
    return NSColor.labelColor;
}

NSTextAlignment textAlignment(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::Left:
        return NSTextAlignmentLeft;
    case TextAlignment::Center:
        return NSTextAlignmentCenter;
    case TextAlignment::Right:
        return NSTextAlignmentRight;
    }
    return NSTextAlignmentLeft;
}

NSLayoutAttribute stackAlignment(const StackView& stack) {
    const bool vertical = stack.orientation == Orientation::Vertical;
    if (stack.alignment == StackAlignment::Center) {
        return vertical ? NSLayoutAttributeCenterX : NSLayoutAttributeCenterY;
    }
    return vertical ? NSLayoutAttributeLeading : NSLayoutAttributeTop;
}

bool wrapsText(const View& view) {
    const auto* label = std::get_if<LabelView>(&view.content);
    return label != nullptr && label->wraps;
}

// An empty native view for a kind of description; update() fills it.
struct Create {
    NSView* operator()(const LabelView& label) const {
        return label.wraps ? [NSTextField wrappingLabelWithString:@""] : [NSTextField labelWithString:@""];
    }
    NSView* operator()(const ButtonView&) const { return [NSButton buttonWithTitle:@"" target:nil action:nil]; }
    NSView* operator()(const ImageView&) const { return [[NSImageView alloc] initWithFrame:NSZeroRect]; }
    NSView* operator()(const StackView&) const { return [[NSStackView alloc] initWithFrame:NSZeroRect]; }
    NSView* operator()(const SpacerView&) const { return [[NSView alloc] initWithFrame:NSZeroRect]; }
    NSView* operator()(const BoxView&) const { return [[RBMacBoxView alloc] initWithFrame:NSZeroRect]; }
    NSView* operator()(const ScrollView&) const {
        NSScrollView* scroll = [[NSScrollView alloc] initWithFrame:NSZeroRect];
        scroll.hasVerticalScroller = YES;
        scroll.drawsBackground = NO;
        RBMacFlippedView* content = [[RBMacFlippedView alloc] initWithFrame:NSZeroRect];
        content.translatesAutoresizingMaskIntoConstraints = NO;
        scroll.documentView = content;
        NSClipView* clip = scroll.contentView;
        [NSLayoutConstraint activateConstraints:@[
            [content.leadingAnchor constraintEqualToAnchor:clip.leadingAnchor],
            [content.topAnchor constraintEqualToAnchor:clip.topAnchor],
            [content.widthAnchor constraintEqualToAnchor:clip.widthAnchor]
        ]];
        return scroll;
    }
    NSView* operator()(const CheckBoxView&) const { return [NSButton checkboxWithTitle:@"" target:nil action:nil]; }
    NSView* operator()(const PopUpView&) const { return [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO]; }
};

} // namespace

ViewNode::ViewNode(const View& view)
    : kind_(view.content.index())
    , wraps_(wrapsText(view))
    , native_(std::visit(Create{}, view.content)) {
    native_.translatesAutoresizingMaskIntoConstraints = NO;
    update(view);
}

ViewNode::~ViewNode() {
    // The system may keep the native view a little longer; it must not call the product any more.
    [buttonTarget_ setAction:nullptr];
    if (kind_ == View{.content = BoxView{}}.content.index()) {
        [(RBMacBoxView*)native_ takeOver:{}];
    }
}

bool ViewNode::isSameKind(const View& view) const {
    return view.content.index() == kind_ && wrapsText(view) == wraps_;
}

bool ViewNode::render(std::unique_ptr<ViewNode>& node, const View& view) {
    if (node && node->isSameKind(view)) {
        node->update(view);
        return false;
    }
    [node ? node->native() : nil removeFromSuperview];
    node = std::make_unique<ViewNode>(view);
    return true;
}

void ViewNode::update(const View& view) {
    identifier_ = view.identifier;
    native_.toolTip = view.toolTip.empty() ? nil : nsString(view.toolTip);
    std::optional<double> width = view.width;
    std::optional<double> height = view.height;
    if (const auto* label = std::get_if<LabelView>(&view.content)) {
        updateLabel(*label);
    } else if (const auto* button = std::get_if<ButtonView>(&view.content)) {
        updateButton(*button);
    } else if (const auto* image = std::get_if<ImageView>(&view.content)) {
        updateImage(*image);
        width = width ? width : image->size.width;
        height = height ? height : image->size.height;
    } else if (const auto* stack = std::get_if<StackView>(&view.content)) {
        updateStack(*stack);
    } else if (const auto* box = std::get_if<BoxView>(&view.content)) {
        updateBox(*box);
    } else if (const auto* scroll = std::get_if<ScrollView>(&view.content)) {
        updateScroll(*scroll);
    } else if (const auto* check = std::get_if<CheckBoxView>(&view.content)) {
        updateCheckBox(*check);
    } else if (const auto* popUp = std::get_if<PopUpView>(&view.content)) {
        updatePopUp(*popUp);
    }
    setSize(width, height);
}

void ViewNode::setSize(std::optional<double> width, std::optional<double> height) {
    [NSLayoutConstraint deactivateConstraints:sizes_];
    [sizes_ removeAllObjects];
    if (width) {
        [sizes_ addObject:[native_.widthAnchor constraintEqualToConstant:*width]];
    }
    if (height) {
        [sizes_ addObject:[native_.heightAnchor constraintEqualToConstant:*height]];
    }
    [NSLayoutConstraint activateConstraints:sizes_];
}

void ViewNode::updateLabel(const LabelView& label) {
    NSTextField* field = (NSTextField*)native_;
    field.stringValue = nsString(label.text);
    field.font = nsFont(label.font);
    field.textColor = textColor(label.color);
    field.alignment = textAlignment(label.alignment);
}

void ViewNode::updateButton(const ButtonView& button) {
    setAction(button.action);
    NSButton* native = (NSButton*)native_;
    native.title = nsString(button.title);
    native.bordered = button.bordered ? YES : NO;
    native.bezelColor = button.prominent ? NSColor.systemBlueColor : nil;
    native.contentTintColor = button.bordered ? nil : textColor(button.contentColor);
    native.keyEquivalent = nsString(button.keyEquivalent);
    native.enabled = button.enabled ? YES : NO;
    native.image = nsImage(button.image);
    native.imagePosition = native.image != nil ? NSImageLeading : NSNoImage;
}

void ViewNode::setAction(std::function<void()> action) {
    if (buttonTarget_ == nil) {
        buttonTarget_ = [[RBMacButtonTarget alloc] init];
    }
    [buttonTarget_ setAction:std::move(action)];
    NSControl* control = (NSControl*)native_;
    control.target = buttonTarget_;
    control.action = @selector(press:);
}

void ViewNode::updateCheckBox(const CheckBoxView& box) {
    NSButton* native = (NSButton*)native_;
    native.title = nsString(box.title);
    native.state = box.on ? NSControlStateValueOn : NSControlStateValueOff;
    __weak NSButton* button = native;
    setAction([action = box.action, button] {
        if (action) {
            action(button.state == NSControlStateValueOn);
        }
    });
}

void ViewNode::updatePopUp(const PopUpView& popUp) {
    NSPopUpButton* native = (NSPopUpButton*)native_;
    [native removeAllItems];
    for (const std::string& item : popUp.items) {
        // Through the menu: a pop-up button drops an item of the same title.
        [native.menu addItemWithTitle:nsString(item) action:nil keyEquivalent:@""];
    }
    if (!popUp.items.empty()) {
        [native selectItemAtIndex:static_cast<NSInteger>(popUp.selected.value_or(0))];
    }
    native.enabled = popUp.enabled ? YES : NO;
    __weak NSPopUpButton* button = native;
    setAction([changed = popUp.selectionChanged, button] {
        const NSInteger index = button.indexOfSelectedItem;
        if (changed && index >= 0) {
            changed(static_cast<std::size_t>(index));
        }
    });
}

NSScrollView* ViewNode::scrollView() const {
    return [native_ isKindOfClass:NSScrollView.class] ? (NSScrollView*)native_ : nil;
}

void ViewNode::updateScroll(const ScrollView& scroll) {
    NSView* content = scrollView().documentView;
    if (scroll.child.empty()) {
        for (const auto& child : children_) {
            [child->native() removeFromSuperview];
        }
        children_.clear();
        return;
    }
    children_.resize(1);
    if (!render(children_.front(), scroll.child.front())) {
        return;
    }
    NSView* child = children_.front()->native();
    [content addSubview:child];
    [NSLayoutConstraint activateConstraints:@[
        [child.leadingAnchor constraintEqualToAnchor:content.leadingAnchor],
        [child.trailingAnchor constraintEqualToAnchor:content.trailingAnchor],
        [child.topAnchor constraintEqualToAnchor:content.topAnchor],
        [child.bottomAnchor constraintEqualToAnchor:content.bottomAnchor]
    ]];
}

void ViewNode::updateImage(const ImageView& image) {
    ((NSImageView*)native_).image = nsImage(image.image);
}

void ViewNode::updateStack(const StackView& stack) {
    NSStackView* native = (NSStackView*)native_;
    const bool vertical = stack.orientation == Orientation::Vertical;
    native.orientation =
        vertical ? NSUserInterfaceLayoutOrientationVertical : NSUserInterfaceLayoutOrientationHorizontal;
    native.alignment = stackAlignment(stack);
    native.distribution = stack.distribution == StackDistribution::FillEqually ? NSStackViewDistributionFillEqually
                                                                               : NSStackViewDistributionFill;
    native.spacing = stack.spacing;
    const Insets& insets = stack.insets;
    native.edgeInsets = {insets.top, insets.left, insets.bottom, insets.right};

    while (children_.size() > stack.children.size()) {
        [children_.back()->native() removeFromSuperview];
        children_.pop_back();
    }
    children_.resize(stack.children.size());
    [NSLayoutConstraint deactivateConstraints:places_];
    [places_ removeAllObjects];
    for (std::size_t index = 0; index < children_.size(); ++index) {
        const View& view = stack.children[index];
        if (render(children_[index], view)) {
            [native insertArrangedSubview:children_[index]->native() atIndex:static_cast<NSInteger>(index)];
        }
        NSView* child = children_[index]->native();
        [native setCustomSpacing:view.spacingAfter.value_or(stack.spacing) afterView:child];
        if (view.expands) {
            constexpr NSLayoutPriority willing = 1; // to become longer than it asks for
            [child setContentHuggingPriority:willing
                              forOrientation:vertical ? NSLayoutConstraintOrientationVertical
                                                      : NSLayoutConstraintOrientationHorizontal];
        }
        if (stack.alignment == StackAlignment::Fill || view.fillsBreadth) {
            // The alignment holds one side, this the other.
            [places_ addObject:vertical ? [child.trailingAnchor constraintEqualToAnchor:native.trailingAnchor
                                                                               constant:-insets.right]
                                        : [child.bottomAnchor constraintEqualToAnchor:native.bottomAnchor
                                                                             constant:-insets.bottom]];
        }
    }
    [NSLayoutConstraint activateConstraints:places_];
}

void ViewNode::updateBox(const BoxView& box) {
    RBMacBoxView* native = (RBMacBoxView*)native_;
    [native takeOver:box];
    [NSLayoutConstraint deactivateConstraints:places_];
    [places_ removeAllObjects];
    if (box.child.empty()) {
        for (const auto& child : children_) {
            [child->native() removeFromSuperview];
        }
        children_.clear();
        return;
    }
    children_.resize(1);
    if (render(children_.front(), box.child.front())) {
        [native addSubview:children_.front()->native()];
    }
    NSView* child = children_.front()->native();
    const Insets& insets = box.insets;
    if (box.placement == BoxContentPlacement::Fill) {
        [places_ addObjectsFromArray:@[
            [child.leadingAnchor constraintEqualToAnchor:native.leadingAnchor constant:insets.left],
            [child.trailingAnchor constraintEqualToAnchor:native.trailingAnchor constant:-insets.right],
            [child.topAnchor constraintEqualToAnchor:native.topAnchor constant:insets.top],
            [child.bottomAnchor constraintEqualToAnchor:native.bottomAnchor constant:-insets.bottom]
        ]];
    } else {
        [places_ addObjectsFromArray:@[
            [child.centerXAnchor constraintEqualToAnchor:native.centerXAnchor],
            [child.centerYAnchor constraintEqualToAnchor:native.centerYAnchor],
            [child.leadingAnchor constraintGreaterThanOrEqualToAnchor:native.leadingAnchor constant:insets.left],
            [child.trailingAnchor constraintLessThanOrEqualToAnchor:native.trailingAnchor constant:-insets.right]
        ]];
    }
    [NSLayoutConstraint activateConstraints:places_];
}

const ViewNode* ViewNode::find(const std::string& identifier) const {
    if (identifier_ == identifier) {
        return this;
    }
    for (const auto& child : children_) {
        if (const ViewNode* found = child->find(identifier)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace rb
