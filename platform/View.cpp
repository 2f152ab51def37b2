#include "platform/View.h"

namespace rb {

namespace {

const std::vector<View>* childrenOf(const View& view) {
    if (const auto* stack = std::get_if<StackView>(&view.content)) {
        return &stack->children;
    }
    if (const auto* box = std::get_if<BoxView>(&view.content)) {
        return &box->child;
    }
    if (const auto* scroll = std::get_if<ScrollView>(&view.content)) {
        return &scroll->child;
    }
    return nullptr;
}

} // namespace

const View* findView(const View& root, const std::string& identifier) {
    if (root.identifier == identifier) {
        return &root;
    }
    if (const auto* children = childrenOf(root)) {
        for (const View& child : *children) {
            if (const View* found = findView(child, identifier)) {
                return found;
            }
        }
    }
    return nullptr;
}

} // namespace rb
