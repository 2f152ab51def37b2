#include "desktops/linux/Desktop.h"

#include "desktops/linux/Folders.h"

#include <utility>

namespace rb {

LinuxDesktop::LinuxDesktop(std::vector<std::string> arguments, std::unique_ptr<XConnection> connection,
                           SingleInstance& instance, Log& log)
    : connection_(std::move(connection))
    , application_(std::move(arguments), *connection_, instance, log)
    , runLoop_(log)
    , userDefaults_(configFolder(), runLoop_, log)
    , appearance_(userDefaults_)
    , textMeter_(symbols_)
    , painter_(symbols_)
    , ticker_(runLoop_, painter_)
    , screens_(*connection_, runLoop_)
    , pointer_(*connection_)
    , windows_(*connection_, ticker_, symbols_, appearance_)
    , panels_(ticker_, connection_.get(), windows_.pictures())
    , alerts_(windows_)
    , windowList_(*connection_)
    , eventMonitors_(*connection_)
    , statusBar_({*connection_, runLoop_, userDefaults_, screens_, symbols_, appearance_, windows_, eventMonitors_})
    , hotKeys_(*connection_, runLoop_, log)
    , sessionLock_(userDefaults_, runLoop_, log)
    , updates_(application_, appearance_, log)
    , layerRenderer_(painter_)
    , sounds_(log)
    , pasteboards_(*connection_, runLoop_, log)
    , archives_(dataFolder(), log)
    , displays_(*connection_, runLoop_)
    , childProcesses_(runLoop_)
    , fileOperations_(runLoop_)
    , dragPasteboard_(*connection_, runLoop_)
    , previewPanel_(application_, windows_, runLoop_, thumbnails_)
    , workspace_(log)
    , frontFolder_(*connection_)
    , savePanels_(windows_)
    , quickActions_(log)
    , screenshotPreferences_(userDefaults_, log)
    , captureFacts_(*connection_)
    , services_{.application = application_,
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
                .log = log} {
    application_.setLastWork([this] {
        userDefaults_.synchronize();
        pasteboards_.general().handOver();
    });
}

LinuxDesktop::~LinuxDesktop() {
    // Background work refers to services that go before the run loop does.
    runLoop_.finishBackgroundWork();
    application_.setLastWork(nullptr);
}

} // namespace rb
