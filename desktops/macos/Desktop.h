#pragma once

#include "desktops/macos/Alerts.h"
#include "desktops/macos/Appearance.h"
#include "desktops/macos/Application.h"
#include "desktops/macos/Archives.h"
#include "desktops/macos/ByteCounts.h"
#include "desktops/macos/CaptureFacts.h"
#include "desktops/macos/ChildProcesses.h"
#include "desktops/macos/Displays.h"
#include "desktops/macos/DragPasteboard.h"
#include "desktops/macos/EventMonitors.h"
#include "desktops/macos/FileOperations.h"
#include "desktops/macos/Files.h"
#include "desktops/macos/FolderWatches.h"
#include "desktops/macos/FrontFolder.h"
#include "desktops/macos/Hardware.h"
#include "desktops/macos/HotKeys.h"
#include "desktops/macos/LayerRenderer.h"
#include "desktops/macos/Log.h"
#include "desktops/macos/Panels.h"
#include "desktops/macos/Pasteboards.h"
#include "desktops/macos/Pointer.h"
#include "desktops/macos/PreviewPanel.h"
#include "desktops/macos/QuickActions.h"
#include "desktops/macos/RandomSource.h"
#include "desktops/macos/RunLoop.h"
#include "desktops/macos/SavePanels.h"
#include "desktops/macos/Screens.h"
#include "desktops/macos/ScreenshotPreferences.h"
#include "desktops/macos/SessionLock.h"
#include "desktops/macos/Sounds.h"
#include "desktops/macos/StatusBar.h"
#include "desktops/macos/TextMeter.h"
#include "desktops/macos/Thumbnails.h"
#include "desktops/macos/URLSessions.h"
#include "desktops/macos/Updates.h"
#include "desktops/macos/UserDefaults.h"
#include "desktops/macos/Window.h"
#include "desktops/macos/WindowList.h"
#include "desktops/macos/Workspace.h"
#include "platform/Desktop.h"

namespace rb {

// All services of macOS. Created first thing in the program, on the main thread, and outlives everything else.
class MacDesktop {
public:
    MacDesktop() { application_.setPreviewPanel(previewPanel_); }
    MacDesktop(const MacDesktop&) = delete;
    MacDesktop& operator=(const MacDesktop&) = delete;

    const Desktop& desktop() const { return desktop_; }

private:
    MacApplication application_; // first: the others expect a shared application
    MacLog log_;
    MacRunLoop runLoop_;
    MacUserDefaults userDefaults_;
    MacStatusBar statusBar_;
    MacWindows windows_;
    MacWindowList windowList_;
    MacPanels panels_;
    MacAlerts alerts_{runLoop_};
    MacScreens screens_;
    MacPointer pointer_;
    MacHotKeys hotKeys_;
    MacSessionLock sessionLock_{log_};
    MacAppearance appearance_;
    MacTextMeter textMeter_;
    MacUpdates updates_{log_};
    MacEventMonitors eventMonitors_;
    MacFiles files_;
    MacLayerRenderer layerRenderer_;
    MacRandomSource random_;
    MacSounds sounds_;
    MacThumbnails thumbnails_;
    MacPasteboards pasteboards_;
    MacArchives archives_{log_};
    MacByteCounts byteCounts_;
    MacDisplays displays_;
    MacHardware hardware_;
    MacChildProcesses childProcesses_;
    MacFileOperations fileOperations_{runLoop_};
    MacDragPasteboard dragPasteboard_;
    MacPreviewPanel previewPanel_;
    MacWorkspace workspace_;
    MacFrontFolder frontFolder_;
    MacSavePanels savePanels_;
    MacQuickActions quickActions_;
    MacURLSessions urlSessions_;
    MacFolderWatches folderWatches_;
    MacScreenshotPreferences screenshotPreferences_{log_};
    MacCaptureFacts captureFacts_;
    Desktop desktop_{.application = application_,
                     .runLoop = runLoop_,
                     .userDefaults = userDefaults_,
                     .statusBar = statusBar_,
                     .windows = windows_,
                     .windowList = windowList_,
                     .panels = panels_,
                     .alerts = alerts_,
                     .screens = screens_,
                     .pointer = pointer_,
                     .hotKeys = hotKeys_,
                     .sessionLock = sessionLock_,
                     .appearance = appearance_,
                     .textMeter = textMeter_,
                     .updates = updates_,
                     .eventMonitors = eventMonitors_,
                     .files = files_,
                     .layerRenderer = layerRenderer_,
                     .random = random_,
                     .sounds = sounds_,
                     .thumbnails = thumbnails_,
                     .pasteboards = pasteboards_,
                     .archives = archives_,
                     .byteCounts = byteCounts_,
                     .displays = displays_,
                     .hardware = hardware_,
                     .childProcesses = childProcesses_,
                     .fileOperations = fileOperations_,
                     .dragPasteboard = dragPasteboard_,
                     .previewPanel = previewPanel_,
                     .workspace = workspace_,
                     .frontFolder = frontFolder_,
                     .savePanels = savePanels_,
                     .quickActions = quickActions_,
                     .urlSessions = urlSessions_,
                     .folderWatches = folderWatches_,
                     .screenshotPreferences = screenshotPreferences_,
                     .captureFacts = captureFacts_,
                     .log = log_};
};

} // namespace rb
