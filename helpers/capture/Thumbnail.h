#pragma once

#include "helpers/capture/Pixels.h"

#include <string>

namespace rb {

class XConnection;

// Shows a saved capture in a corner of the display for a few seconds, by a process of its own: a click opens it, it
// can be dragged somewhere, a right click puts it away. `place` is on the display.
void showThumbnail(const std::string& path, PixelPoint place);

// That process, with the words that follow its command. With what it ends.
int runThumbnail(const std::string& path, PixelPoint place);

// Before a capture: takes the one that is shown away, so that it isn't in the picture. Waits for that a moment.
void putThumbnailAway(XConnection& connection);

} // namespace rb
