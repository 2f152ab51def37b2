#pragma once

#include "platform/TextMeter.h"
#include "platform/View.h"

#include <map>
#include <string>
#include <vector>

// Where the views of a tree lie. Coordinates from the content's bottom left.
namespace rb {

// Indices of the children from the root downwards: the place by which a view survives a new rendering.
using ViewPath = std::vector<std::size_t>;

struct PlacedView {
    const View* view = nullptr;
    ViewPath path;
    Rect frame;
};

// The size a view asks for when it is given at most that width.
Size fittingSize(const View& view, double availableWidth, const TextMeter& meter);

// How far scroll views are scrolled down, by their identifier.
using ScrollOffsets = std::map<std::string, double>;

// Every view of the tree, parents before their children. The root fills the area. Points into the tree.
std::vector<PlacedView> layOut(const View& root, Size area, const TextMeter& meter, const ScrollOffsets& offsets = {});

// The children of a stack, box or scroll view, empty for others.
const std::vector<View>& childrenOf(const View& view);

// The view at that place, or null.
const View* viewAt(const View& root, const ViewPath& path);

} // namespace rb
