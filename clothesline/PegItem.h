#pragma once

#include "clothesline/PegView.h"
#include "motion/Image.h"
#include "motion/Layer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace rb {

// One file hanging on the line, with its layers and the states of its card. Shared: delayed motions hold it weakly.
struct RBPegItem {
    std::string path; // absolute and standardized: the item's identity on the line
    bool isImage = false;
    bool isFolder = false; // a directory that the system doesn't show as one file
    Image thumb;
    Size thumbSize;  // of the picture itself, points
    double tilt = 0; // resting rotation of the card, degrees
    Size cardSize;   // points

    bool flying = false; // hung by a capture flight, invisible until it lands
    bool hovered = false;
    bool pressed = false;
    bool dragging = false;
    bool dropTarget = false;
    bool absorbed = false;  // went into a folder card: leaves without falling
    bool moving = false;    // under the user's reorder drag
    bool inTransit = false; // its file is on the way to another place: the card waits for it
    // Bumped each time the copy confirmation shows, so that only the latest one's end hides it.
    std::uint64_t pillGeneration = 0;

    std::shared_ptr<Layer> swing; // swings about the peg, hangs in the line's sliding layer
    std::shared_ptr<Layer> card;
    std::shared_ptr<Layer> glass; // carries the shadow
    std::shared_ptr<Layer> photo;
    std::shared_ptr<Layer> cross;
    std::shared_ptr<Layer> pill;
    std::shared_ptr<Layer> edge;
    RBPegView peg;
};

using RBPegItemRef = std::shared_ptr<RBPegItem>;

} // namespace rb
