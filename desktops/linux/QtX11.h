#pragma once

#include <QWidget>

#include <cstdint>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

// What Qt leaves to be said to the X server about its own windows, on Qt's own connection, so that it comes in the
// right order with Qt's requests. Main thread only.
namespace rb {

// Whether a compositor shows translucent windows as such now.
bool isComposited();

xcb_atom_t internAtom(std::string_view name);

// A CARDINAL property of one of our windows, which is created if it wasn't yet.
void setCardinals(const QWidget& window, std::string_view property, const std::vector<std::uint32_t>& values);

// The window's name among windows (WM_CLASS), for rules of window managers and compositors. Before it is shown; it is
// created if it wasn't yet.
void setWindowClass(const QWidget& window, std::string_view name);

// Sends what Qt has asked for so far, before another connection speaks about the same windows.
void flushQt();

// Null when Qt doesn't run on X11.
xcb_connection_t* qtConnection();

} // namespace rb
