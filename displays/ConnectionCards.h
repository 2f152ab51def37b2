#pragma once

#include "displays/Pages.h"

namespace rb {

// The page of cables and power: a card for each port in use, or one that says why there is none.
void addConnectionCards(StackView& page, const PageState& state, const PageActions& actions, CardPool& cards);

} // namespace rb
