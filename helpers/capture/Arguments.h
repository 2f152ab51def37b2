#pragma once

#include <optional>
#include <string>
#include <vector>

namespace rb {

// What is to be captured.
enum class CaptureArea { Screen, Region, Window, ActiveWindow, AllDisplays };

// A pure reading of the command line of rookbay-capture.
struct CaptureArguments {
    enum class Action { Capture, ServeClipboard, ShowThumbnail, Help, Version, Refuse };
    Action action = Action::Capture;
    CaptureArea area = CaptureArea::Screen;
    double delay = 0; // seconds
    bool clipboard = false;
    std::optional<std::string> output = std::nullopt; // a file or a folder, as it was named
    // What to print: standard output for Help and Version, standard error for Refuse.
    std::string text = {};
};

// With what the process ends; the manual page explains them.
namespace CaptureExit {
inline constexpr int Taken = 0;
inline constexpr int Failed = 1;
inline constexpr int Misuse = 2;
inline constexpr int Cancelled = 3;
inline constexpr int Busy = 4;
} // namespace CaptureExit

// The program calls itself by these words to keep a picture on the clipboard after it has ended, and to show a
// thumbnail: then x, y (pixels) and the file follow.
inline constexpr const char* serveClipboardCommand = "--serve-clipboard";
inline constexpr const char* showThumbnailCommand = "--show-thumbnail";

// Without the program's own name.
CaptureArguments readCaptureArguments(const std::vector<std::string>& arguments);

} // namespace rb
