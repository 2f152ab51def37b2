#pragma once

#include "desktops/linux/Alerts.h"
#include "desktops/linux/Appearance.h"
#include "desktops/linux/Application.h"
#include "desktops/linux/Archives.h"
#include "desktops/linux/ByteCounts.h"
#include "desktops/linux/CaptureFacts.h"
#include "desktops/linux/ChildProcesses.h"
#include "desktops/linux/Displays.h"
#include "desktops/linux/DragPasteboard.h"
#include "desktops/linux/EventMonitors.h"
#include "desktops/linux/FileOperations.h"
#include "desktops/linux/Files.h"
#include "desktops/linux/FolderWatches.h"
#include "desktops/linux/FrontFolder.h"
#include "desktops/linux/Hardware.h"
#include "desktops/linux/HotKeys.h"
#include "desktops/linux/LayerPainter.h"
#include "desktops/linux/LayerRenderer.h"
#include "desktops/linux/LayerSurface.h"
#include "desktops/linux/Panels.h"
#include "desktops/linux/Pasteboards.h"
#include "desktops/linux/Pointer.h"
#include "desktops/linux/PreviewPanel.h"
#include "desktops/linux/QuickActions.h"
#include "desktops/linux/RandomSource.h"
#include "desktops/linux/RunLoop.h"
#include "desktops/linux/SavePanels.h"
#include "desktops/linux/Screens.h"
#include "desktops/linux/ScreenshotPreferences.h"
#include "desktops/linux/SessionLock.h"
#include "desktops/linux/Sounds.h"
#include "desktops/linux/StatusBar.h"
#include "desktops/linux/Symbols.h"
#include "desktops/linux/TextMeter.h"
#include "desktops/linux/Thumbnails.h"
#include "desktops/linux/URLSessions.h"
#include "desktops/linux/Updates.h"
#include "desktops/linux/UserDefaults.h"
#include "desktops/linux/WindowList.h"
#include "desktops/linux/Windows.h"
#include "desktops/linux/Workspace.h"
#include "desktops/linux/XConnection.h"
#include "platform/Desktop.h"

#include <memory>
#include <string>
#include <vector>

namespace rb {

class SingleInstance;

// All services of the Linux desktop, in the order in which they need one another. What costs something (windows,
// pictures, connections to other programs) is made by each service when it is first asked for.
class LinuxDesktop {
public:
    // The X connection is ours from now on; the others outlive the desktop.
    LinuxDesktop(std::vector<std::string> arguments, std::unique_ptr<XConnection> connection, SingleInstance& instance,
                 Log& log);
    ~LinuxDesktop();
    LinuxDesktop(const LinuxDesktop&) = delete;
    LinuxDesktop& operator=(const LinuxDesktop&) = delete;

    const Desktop& services() const { return services_; }

    // What tests of the services look into.
    LinuxWindows& windows() { return windows_; }
    LinuxAlerts& alerts() { return alerts_; }
    LinuxStatusBar& statusBar() { return statusBar_; }

private:
    std::unique_ptr<XConnection> connection_;
    LinuxApplication application_;
    LinuxRunLoop runLoop_;
    LinuxUserDefaults userDefaults_;
    LinuxAppearance appearance_;
    Symbols symbols_;
    LinuxTextMeter textMeter_;
    LayerPainter painter_;
    LayerTicker ticker_;
    LinuxScreens screens_;
    LinuxPointer pointer_;
    LinuxWindows windows_;
    LinuxPanels panels_;
    LinuxAlerts alerts_;
    LinuxWindowList windowList_;
    LinuxEventMonitors eventMonitors_;
    LinuxStatusBar statusBar_;
    LinuxHotKeys hotKeys_;
    LinuxSessionLock sessionLock_;
    LinuxUpdates updates_;
    LinuxFiles files_;
    LinuxLayerRenderer layerRenderer_;
    LinuxRandomSource random_;
    LinuxSounds sounds_;
    LinuxThumbnails thumbnails_;
    LinuxPasteboards pasteboards_;
    LinuxArchives archives_;
    LinuxByteCounts byteCounts_;
    LinuxDisplays displays_;
    LinuxHardware hardware_;
    LinuxChildProcesses childProcesses_;
    LinuxFileOperations fileOperations_;
    LinuxDragPasteboard dragPasteboard_;
    LinuxPreviewPanel previewPanel_;
    LinuxWorkspace workspace_;
    LinuxFrontFolder frontFolder_;
    LinuxSavePanels savePanels_;
    LinuxQuickActions quickActions_;
    LinuxURLSessions urlSessions_;
    LinuxFolderWatches folderWatches_;
    LinuxScreenshotPreferences screenshotPreferences_;
    LinuxCaptureFacts captureFacts_;
    Desktop services_;
};

} // namespace rb
