#pragma once

#include <cstdint>
#include <optional>

namespace rb {

// Asks the window server whether the current space of a display belongs to a full-screen application, through functions
// that have no public declaration: false where they are missing or answer something else. Main thread only.
class FullScreenSpaces {
public:
    // With the number that CoreGraphics has for the display.
    bool isShownOn(std::uint32_t displayId) const;

private:
    using MainConnection = int (*)();
    using CopyDisplaySpaces = const void* (*)(int connection); // a CFArray
    struct WindowServer {
        MainConnection mainConnection;
        CopyDisplaySpaces copyDisplaySpaces;
    };
    const WindowServer& windowServer() const;

    mutable std::optional<WindowServer> windowServer_; // looked up by name once
};

} // namespace rb
