#pragma once

#include "desktops/linux/Appearance.h"
#include "desktops/linux/Files.h"
#include "desktops/linux/LayerPainter.h"
#include "desktops/linux/LayerRenderer.h"
#include "desktops/linux/Symbols.h"
#include "desktops/linux/TextMeter.h"
#include "desktops/linux/Thumbnails.h"
#include "desktops/virtual/Desktop.h"

#include <memory>

namespace rb {

// A virtual desktop that measures, colours, draws and decodes pictures as the Linux one does. The look is "light" or
// "dark".
struct Stage {
    explicit Stage(const char* look) { desktop.userDefaults().setObject("LinuxAppearance", look); }

    Desktop services() {
        const Desktop& given = desktop.services();
        return {.application = given.application,
                .runLoop = given.runLoop,
                .userDefaults = given.userDefaults,
                .statusBar = given.statusBar,
                .windows = given.windows,
                .windowList = given.windowList,
                .panels = given.panels,
                .alerts = given.alerts,
                .screens = given.screens,
                .pointer = given.pointer,
                .hotKeys = given.hotKeys,
                .sessionLock = given.sessionLock,
                .appearance = appearance(),
                .textMeter = meter,
                .updates = given.updates,
                .eventMonitors = given.eventMonitors,
                .files = files,
                .layerRenderer = renderer,
                .random = given.random,
                .sounds = given.sounds,
                .thumbnails = thumbnails,
                .pasteboards = given.pasteboards,
                .archives = given.archives,
                .byteCounts = given.byteCounts,
                .displays = given.displays,
                .hardware = given.hardware,
                .childProcesses = given.childProcesses,
                .fileOperations = given.fileOperations,
                .dragPasteboard = given.dragPasteboard,
                .previewPanel = given.previewPanel,
                .workspace = given.workspace,
                .frontFolder = given.frontFolder,
                .savePanels = given.savePanels,
                .quickActions = given.quickActions,
                .urlSessions = given.urlSessions,
                .folderWatches = given.folderWatches,
                .screenshotPreferences = given.screenshotPreferences,
                .captureFacts = given.captureFacts,
                .log = given.log};
    }
    LinuxAppearance& appearance() {
        if (!appearance_) {
            appearance_ = std::make_unique<LinuxAppearance>(desktop.userDefaults());
        }
        return *appearance_;
    }

    VirtualDesktop desktop;
    Symbols symbols;
    LinuxTextMeter meter{symbols};
    LayerPainter painter{symbols};
    LinuxLayerRenderer renderer{painter};
    LinuxFiles files;
    LinuxThumbnails thumbnails;

private:
    std::unique_ptr<LinuxAppearance> appearance_;
};

} // namespace rb
