#pragma once

#include <string>

namespace rb {

// Puts the picture (the bytes of a PNG file) on the clipboard: a process of its own keeps it there for others until
// another program copies something. False when the clipboard couldn't be had.
bool putOnClipboard(const std::string& png);

// That process: the picture comes on standard input, a byte on standard output says that it is on the clipboard. With
// what it ends.
int serveClipboard();

} // namespace rb
