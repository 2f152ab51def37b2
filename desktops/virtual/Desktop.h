#pragma once

#include "desktops/virtual/Alerts.h"
#include "desktops/virtual/Appearance.h"
#include "desktops/virtual/Application.h"
#include "desktops/virtual/Archives.h"
#include "desktops/virtual/ByteCounts.h"
#include "desktops/virtual/ChildProcesses.h"
#include "desktops/virtual/Displays.h"
#include "desktops/virtual/DragPasteboard.h"
#include "desktops/virtual/EventMonitors.h"
#include "desktops/virtual/FileOperations.h"
#include "desktops/virtual/Files.h"
#include "desktops/virtual/FolderWatches.h"
#include "desktops/virtual/FrontFolder.h"
#include "desktops/virtual/Hand.h"
#include "desktops/virtual/Hardware.h"
#include "desktops/virtual/HotKeys.h"
#include "desktops/virtual/Journal.h"
#include "desktops/virtual/Keyboard.h"
#include "desktops/virtual/LayerRenderer.h"
#include "desktops/virtual/Layers.h"
#include "desktops/virtual/Log.h"
#include "desktops/virtual/Panels.h"
#include "desktops/virtual/Pasteboards.h"
#include "desktops/virtual/Pointer.h"
#include "desktops/virtual/PreviewPanel.h"
#include "desktops/virtual/QuickActions.h"
#include "desktops/virtual/RandomSource.h"
#include "desktops/virtual/RunLoop.h"
#include "desktops/virtual/SavePanels.h"
#include "desktops/virtual/Screens.h"
#include "desktops/virtual/Screenshots.h"
#include "desktops/virtual/SessionLock.h"
#include "desktops/virtual/Sounds.h"
#include "desktops/virtual/StatusBar.h"
#include "desktops/virtual/TextMeter.h"
#include "desktops/virtual/Thumbnails.h"
#include "desktops/virtual/URLSessions.h"
#include "desktops/virtual/Updates.h"
#include "desktops/virtual/UserDefaults.h"
#include "desktops/virtual/WindowList.h"
#include "desktops/virtual/Windows.h"
#include "desktops/virtual/Workspace.h"
#include "platform/Desktop.h"

#include <memory>
#include <string>

namespace rb {

// A whole desktop in memory whose time and user are the test. Everything happens on the test's thread and in the
// same order every time. Ask a service for its state; act through keyboard(), pointer(), the menus and the windows.
// The product's objects must be gone before the desktop goes, which checks that no timer is left.
class VirtualDesktop {
public:
    VirtualDesktop();

    // What the product gets; lives as long as this.
    const Desktop& services() const { return services_; }

    void advance(double seconds) { runLoop_.advance(seconds); }

    VirtualApplication& application() { return application_; }
    VirtualRunLoop& runLoop() { return runLoop_; }
    VirtualUserDefaults& userDefaults() { return userDefaults_; }
    VirtualStatusBar& statusBar() { return statusBar_; }
    VirtualWindows& windows() { return windows_; }
    VirtualPanels& panels() { return panels_; }
    VirtualWindowList& windowList() { return windowList_; }
    VirtualAlerts& alerts() { return alerts_; }
    VirtualScreens& screens() { return screens_; }
    VirtualPointer& pointer() { return pointer_; }
    VirtualHotKeys& hotKeys() { return hotKeys_; }
    VirtualKeyboard& keyboard() { return keyboard_; }
    VirtualSessionLock& sessionLock() { return sessionLock_; }
    VirtualAppearance& appearance() { return appearance_; }
    VirtualTextMeter& textMeter() { return textMeter_; }
    VirtualUpdates& updates() { return updates_; }
    VirtualEventMonitors& eventMonitors() { return eventMonitors_; }
    VirtualFiles& files() { return files_; }
    VirtualLayerRenderer& layerRenderer() { return layerRenderer_; }
    VirtualRandomSource& random() { return random_; }
    VirtualSounds& sounds() { return sounds_; }
    VirtualThumbnails& thumbnails() { return thumbnails_; }
    VirtualPasteboard& pasteboard() { return pasteboards_.general(); }
    VirtualArchives& archives() { return archives_; }
    VirtualDisplays& displays() { return displays_; }
    VirtualHardware& hardware() { return hardware_; }
    VirtualChildProcesses& childProcesses() { return childProcesses_; }
    VirtualFileOperations& fileOperations() { return fileOperations_; }
    VirtualDragPasteboard& dragPasteboard() { return dragPasteboard_; }
    VirtualPreviewPanel& previewPanel() { return previewPanel_; }
    VirtualHand& hand() { return hand_; }
    VirtualWorkspace& workspace() { return workspace_; }
    VirtualFrontFolder& frontFolder() { return frontFolder_; }
    VirtualSavePanels& savePanels() { return savePanels_; }
    VirtualQuickActions& quickActions() { return quickActions_; }
    VirtualURLSessions& urlSessions() { return urlSessions_; }
    VirtualFolderWatches& folderWatches() { return folderWatches_; }
    VirtualScreenshotPreferences& screenshotPreferences() { return screenshotPreferences_; }
    VirtualCaptureFacts& captureFacts() { return captureFacts_; }
    VirtualLog& log() { return log_; }
    VirtualLayers& layers() { return layers_; }
    Journal& journal() { return journal_; }

    // Opens the menu of the first status item.
    Menu& statusMenu();
    // The submenu of that name as it is once opened; it must be reachable from a status item.
    Menu& menu(const std::string& title);
    // Opens the status items' menus until the item is found and chooses it, the modifiers held.
    void chooseMenuItem(const std::string& title, std::uint32_t heldModifiers = NoModifiers);

private:
    // The run loop first: it goes last, after whatever might still hold a timer.
    VirtualRunLoop runLoop_;
    Journal journal_;
    VirtualLayers layers_{runLoop_};
    VirtualApplication application_{runLoop_, journal_};
    VirtualUserDefaults userDefaults_{runLoop_};
    VirtualAlerts alerts_{runLoop_};
    VirtualScreens screens_;
    VirtualStatusBar statusBar_{runLoop_, screens_, journal_};
    VirtualWindowList windowList_;
    VirtualPointer pointer_;
    VirtualHotKeys hotKeys_{runLoop_, journal_};
    VirtualSessionLock sessionLock_{runLoop_};
    VirtualAppearance appearance_;
    VirtualTextMeter textMeter_;
    VirtualUpdates updates_{runLoop_, journal_};
    VirtualEventMonitors eventMonitors_{pointer_};
    VirtualFiles files_;
    VirtualLayerRenderer layerRenderer_;
    VirtualRandomSource random_;
    VirtualSounds sounds_;
    VirtualThumbnails thumbnails_{files_};
    VirtualPasteboards pasteboards_{runLoop_};
    VirtualArchives archives_;
    VirtualByteCounts byteCounts_;
    VirtualDisplays displays_;
    VirtualHardware hardware_;
    VirtualChildProcesses childProcesses_{runLoop_};
    VirtualFileOperations fileOperations_{files_, runLoop_};
    VirtualDragPasteboard dragPasteboard_;
    VirtualPreviewPanel previewPanel_{application_};
    VirtualWorkspace workspace_{runLoop_};
    VirtualFrontFolder frontFolder_{runLoop_};
    VirtualSavePanels savePanels_{runLoop_};
    VirtualQuickActions quickActions_{runLoop_};
    VirtualURLSessions urlSessions_{runLoop_};
    VirtualFolderWatches folderWatches_{runLoop_};
    VirtualScreenshotPreferences screenshotPreferences_{runLoop_, files_};
    VirtualCaptureFacts captureFacts_;
    VirtualLog log_;
    VirtualPanels panels_{runLoop_, layers_, screens_};
    VirtualHand hand_{runLoop_, pointer_, panels_, eventMonitors_, dragPasteboard_};
    VirtualWindows windows_;
    VirtualKeyboard keyboard_{hotKeys_, alerts_, windows_};
    Desktop services_;
};

} // namespace rb
