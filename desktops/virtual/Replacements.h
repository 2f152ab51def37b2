#pragma once

#include "platform/Desktop.h"

namespace rb {

// Services that stand in for those of a desktop; null for the desktop's own.
struct Replacements {
    Appearance* appearance = nullptr;
    TextMeter* textMeter = nullptr;
    Updates* updates = nullptr;
    Files* files = nullptr;
    LayerRenderer* layerRenderer = nullptr;
    Thumbnails* thumbnails = nullptr;
    URLSessions* urlSessions = nullptr;
};

// The desktop's services with some of them replaced. All of them outlive what is returned.
inline Desktop withReplaced(const Desktop& given, const Replacements& by) {
    const auto replaced = [](auto* other, auto& own) -> auto& {
        return other != nullptr ? *other : own;
    };
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
            .appearance = replaced(by.appearance, given.appearance),
            .textMeter = replaced(by.textMeter, given.textMeter),
            .updates = replaced(by.updates, given.updates),
            .eventMonitors = given.eventMonitors,
            .files = replaced(by.files, given.files),
            .layerRenderer = replaced(by.layerRenderer, given.layerRenderer),
            .random = given.random,
            .sounds = given.sounds,
            .thumbnails = replaced(by.thumbnails, given.thumbnails),
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
            .urlSessions = replaced(by.urlSessions, given.urlSessions),
            .folderWatches = given.folderWatches,
            .screenshotPreferences = given.screenshotPreferences,
            .captureFacts = given.captureFacts,
            .log = given.log};
}

} // namespace rb
