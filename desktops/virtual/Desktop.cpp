#include "desktops/virtual/Desktop.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Menus.h"

namespace rb {

VirtualDesktop::VirtualDesktop()
    : windows_({.loop = runLoop_,
                .layers = layers_,
                .application = application_,
                .alerts = alerts_,
                .screens = screens_,
                .pointer = pointer_,
                .appearance = appearance_,
                .meter = textMeter_,
                .journal = journal_})
    , services_({.application = application_,
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
                 .log = log_}) {}

Menu& VirtualDesktop::statusMenu() {
    if (statusBar_.items().empty() || !statusBar_.items().front()->menu()) {
        throw ImpossibleAct("there is no status item with a menu");
    }
    Menu& opened = *statusBar_.items().front()->menu();
    menus::open(opened);
    return opened;
}

Menu& VirtualDesktop::menu(const std::string& title) {
    for (const VirtualStatusItem* statusItem : statusBar_.items()) {
        if (!statusItem->menu()) {
            continue;
        }
        menus::open(*statusItem->menu());
        const auto item = menus::findItem(*statusItem->menu(), title);
        if (item && item->submenu) {
            menus::open(*item->submenu);
            return *item->submenu;
        }
    }
    throw ImpossibleAct("no status item has a submenu \"" + title + "\"");
}

void VirtualDesktop::chooseMenuItem(const std::string& title, std::uint32_t heldModifiers) {
    for (const VirtualStatusItem* statusItem : statusBar_.items()) {
        const auto opened = statusItem->menu();
        if (!opened) {
            continue;
        }
        menus::open(*opened);
        if (menus::findItem(*opened, title, heldModifiers)) {
            menus::choose(*opened, title, heldModifiers);
            return;
        }
    }
    throw ImpossibleAct("no status item has a menu item \"" + title + "\"");
}

} // namespace rb
