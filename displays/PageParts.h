#pragma once

#include "app/CardView.h"
#include "platform/View.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

// The pieces that the pages of the window are put together from.
namespace rb {

// Wrapping text in 13 points.
View text(std::string string, TextColor color = TextColor::Label);
// Semibold, `size` in points; wraps.
View heading(std::string string, double size);
StackView vertical();
View cardTitle(std::string title, const std::string& symbol, const Color& blue);
View metrics(const std::vector<std::pair<std::string, std::string>>& pairs);
View emptyCard(std::string title, std::string detail);
// As wide as the stack it is added to.
View fullWidth(View view);

// The cards of a page, kept from one rendering to the next so that a card under the pointer stays lit.
class CardPool {
public:
    // The cards are handed out anew from the first one on.
    void restart() { used_ = 0; }
    // The content in a card.
    View card(View content);

private:
    std::vector<std::unique_ptr<RBCardView>> cards_;
    std::size_t used_ = 0;
};

} // namespace rb
