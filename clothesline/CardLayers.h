#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"

#include <string>

// What a card is made of: its layer tree, its colours in light and dark, and how it looks hovered, pressed, copied.
namespace rb {

// Whether the desktop looks dark now.
bool RBIsDark(const Desktop& desktop);
// The picture's size on a card; rounding halves away from zero.
Size RBPictureSize(const RBPegItem& item);
// A small rounded label, semibold, with its own shadow. Its bounds are set, its position is the caller's.
std::shared_ptr<Layer> RBCapsule(const Desktop& desktop, const std::string& text, double fontSize);
// The clothes peg, without a place.
std::shared_ptr<Layer> RBMakeClip();
// Sets the contents scale of a whole tree, masks included.
void RBSetScale(Layer& layer, double scale);

// Builds the tree of a card whose thumbnail is loaded, in the look of now, and sets its cardSize. Cards keep that look
// when the appearance changes later.
void buildLayersFor(RBPegItem& item, const Desktop& desktop, double scale);

// Styling on a change of state; nothing when the state is unchanged.
void setItemHovered(RBPegItem& item, bool hovered);
void setItemPressed(RBPegItem& item, bool pressed);
// A card in the user's hand, or one whose file is on its way, is dim.
void setItemInTransit(RBPegItem& item, bool inTransit);
void applyCardOpacity(RBPegItem& item);
// Springs to the scale of the present state; a press goes slowly, leading into a long press.
void applyCardScale(RBPegItem& item);

} // namespace rb
