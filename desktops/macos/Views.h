#pragma once

#include "platform/View.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <string>
#include <vector>

@class RBMacButtonTarget;

namespace rb {

// A view of a window's content and the description it shows. Rendering anew updates the native view where the new
// description is of the same kind and makes another one where it isn't. Main thread only.
class ViewNode {
public:
    explicit ViewNode(const View& view);
    ~ViewNode();
    ViewNode(const ViewNode&) = delete;
    ViewNode& operator=(const ViewNode&) = delete;

    NSView* native() const { return native_; }
    // The scroll view of that subtree, or nil when this is none.
    NSScrollView* scrollView() const;
    const std::vector<std::unique_ptr<ViewNode>>& children() const { return children_; }
    // Whether update() can show it in place.
    bool isSameKind(const View& view) const;
    void update(const View& view);
    // Null when there is no view of that identifier in the subtree.
    const ViewNode* find(const std::string& identifier) const;

    // Brings a place in the tree up to the description: an update of its node, or another node. True when it is
    // another one, whose native view then has to be put in place.
    static bool render(std::unique_ptr<ViewNode>& node, const View& view);

private:
    void updateLabel(const LabelView& label);
    void updateButton(const ButtonView& button);
    void updateImage(const ImageView& image);
    void updateStack(const StackView& stack);
    void updateBox(const BoxView& box);
    void updateScroll(const ScrollView& scroll);
    void updateCheckBox(const CheckBoxView& box);
    void updatePopUp(const PopUpView& popUp);
    void setAction(std::function<void()> action);
    void setSize(std::optional<double> width, std::optional<double> height);

    std::size_t kind_;
    bool wraps_ = false; // a wrapping label is another widget
    std::string identifier_;
    NSView* native_;
    RBMacButtonTarget* buttonTarget_ = nil; // the button refers to it weakly
    NSMutableArray<NSLayoutConstraint*>* sizes_ = [NSMutableArray array];
    NSMutableArray<NSLayoutConstraint*>* places_ = [NSMutableArray array]; // of the children
    std::vector<std::unique_ptr<ViewNode>> children_;
};

} // namespace rb
