#pragma once

namespace rb {

class Alerts;
class Appearance;
class Application;
class Archives;
class ByteCounts;
class ChildProcesses;
class Displays;
class DragPasteboard;
class CaptureFacts;
class EventMonitors;
class FileOperations;
class Files;
class FolderWatches;
class FrontFolder;
class Hardware;
class HotKeys;
class LayerRenderer;
class Log;
class Panels;
class Pasteboards;
class Pointer;
class PreviewPanel;
class QuickActions;
class RandomSource;
class RunLoop;
class SavePanels;
class Screens;
class ScreenshotPreferences;
class SessionLock;
class Sounds;
class StatusBar;
class TextMeter;
class Thumbnails;
class Updates;
class URLSessions;
class UserDefaults;
class WindowList;
class Windows;
class Workspace;

// Everything the product may ask of the desktop it runs on. The services outlive whoever is given this.
struct Desktop {
    Application& application;
    RunLoop& runLoop;
    UserDefaults& userDefaults;
    StatusBar& statusBar;
    Windows& windows;
    WindowList& windowList;
    Panels& panels;
    Alerts& alerts;
    Screens& screens;
    Pointer& pointer;
    HotKeys& hotKeys;
    SessionLock& sessionLock;
    Appearance& appearance;
    TextMeter& textMeter;
    Updates& updates;
    EventMonitors& eventMonitors;
    Files& files;
    LayerRenderer& layerRenderer;
    RandomSource& random;
    Sounds& sounds;
    Thumbnails& thumbnails;
    Pasteboards& pasteboards;
    Archives& archives;
    ByteCounts& byteCounts;
    Displays& displays;
    Hardware& hardware;
    ChildProcesses& childProcesses;
    FileOperations& fileOperations;
    DragPasteboard& dragPasteboard;
    PreviewPanel& previewPanel;
    Workspace& workspace;
    FrontFolder& frontFolder;
    SavePanels& savePanels;
    QuickActions& quickActions;
    URLSessions& urlSessions;
    FolderWatches& folderWatches;
    ScreenshotPreferences& screenshotPreferences;
    CaptureFacts& captureFacts;
    Log& log;
};

} // namespace rb
