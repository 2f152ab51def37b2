#include "displays/PageParts.h"

namespace rb {

View text(std::string string, TextColor color) {
    return {.content = LabelView{.text = std::move(string), .color = color, .wraps = true}};
}

View heading(std::string string, double size) {
    return {.content = LabelView{
                .text = std::move(string), .font = {.size = size, .weight = FontWeight::Semibold}, .wraps = true}};
}

StackView vertical() {
    return {.orientation = Orientation::Vertical, .alignment = StackAlignment::Leading, .spacing = 12};
}

View cardTitle(std::string title, const std::string& symbol, const Color& blue) {
    StackView row{.orientation = Orientation::Horizontal, .alignment = StackAlignment::Center, .spacing = 10};
    row.children.push_back({.content = ImageView{.image = Symbol{.name = symbol, .tint = blue}, .size = {26, 26}}});
    row.children.push_back(heading(std::move(title), 19));
    return {.content = std::move(row)};
}

View metrics(const std::vector<std::pair<std::string, std::string>>& pairs) {
    StackView row{.orientation = Orientation::Horizontal,
                  .alignment = StackAlignment::Leading,
                  .distribution = StackDistribution::FillEqually,
                  .spacing = 18};
    for (const auto& [label, value] : pairs) {
        StackView column{.orientation = Orientation::Vertical, .alignment = StackAlignment::Leading, .spacing = 4};
        column.children.push_back(text(label, TextColor::SecondaryLabel));
        column.children.push_back(heading(value, 17));
        row.children.push_back({.content = std::move(column)});
    }
    return fullWidth({.content = std::move(row)});
}

View emptyCard(std::string title, std::string detail) {
    StackView stack = vertical();
    stack.children.push_back(heading(std::move(title), 18));
    stack.children.push_back(text(std::move(detail)));
    return {.content = std::move(stack)};
}

View fullWidth(View view) {
    view.fillsBreadth = true;
    return view;
}

View CardPool::card(View content) {
    if (used_ == cards_.size()) {
        cards_.push_back(std::make_unique<RBCardView>());
    }
    constexpr Insets insets{20, 20, 20, 20};
    return fullWidth(cards_[used_++]->view(std::move(content), insets));
}

} // namespace rb
