#pragma once

// The keys of the user defaults, each spelled once.
namespace rb::DefaultsKey {

// The lock hot key; HotKeyCode alone decides whether one is saved.
inline constexpr const char* HotKeyCode = "HotKeyCode";           // integer, virtual key code
inline constexpr const char* HotKeyModifiers = "HotKeyModifiers"; // integer, or of HotKeyModifiers
inline constexpr const char* HotKeyDisplay = "HotKeyDisplay";     // text shown to the user

inline constexpr const char* ClipboardPaused = "ClipboardPaused";             // nothing is recorded
inline constexpr const char* TextFileLastDirectory = "TextFileLastDirectory"; // folder of the last new text file
inline constexpr const char* RBUseMirrorFeed = "RBUseMirrorFeed";             // updates come through the mirror

// The clothesline.
inline constexpr const char* ClotheslinePaths = "ClotheslinePaths"; // array of paths, oldest first
inline constexpr const char* FileShelfPaths = "FileShelfPaths";     // older name of ClotheslinePaths
inline constexpr const char* ClotheslineScreenshots = "ClotheslineScreenshots";
inline constexpr const char* ClotheslineInbox = "ClotheslineInbox";               // the takeover is on
inline constexpr const char* ClotheslineInboxOffered = "ClotheslineInboxOffered"; // the user was asked about it
inline constexpr const char* ClotheslineInboxSaved = "ClotheslineInboxSaved";     // the user's own screenshot settings
inline constexpr const char* ClotheslineHoverReveal = "ClotheslineHoverReveal";
inline constexpr const char* ClotheslineDragReveal = "ClotheslineDragReveal";
inline constexpr const char* ClotheslineSound = "ClotheslineSound";

// The menu bar hider.
inline constexpr const char* MenuBarHiderEnabled = "MenuBarHiderEnabled";
inline constexpr const char* MenuBarHiderDelay = "MenuBarHiderDelay"; // integer, seconds; 0 for never by time
inline constexpr const char* MenuBarHiderCollapseOnLeave = "MenuBarHiderCollapseOnLeave";
inline constexpr const char* MenuBarHiderIntroShown = "MenuBarHiderIntroShown";

} // namespace rb::DefaultsKey
