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
    , panels_(ticker_, connection_.get())
    , alerts_(windows_)
    , statusBar_(*connection_, runLoop_, screens_, symbols_, appearance_)
    , hotKeys_(*connection_, runLoop_, log)
    , sessionLock_(userDefaults_, runLoop_, log)
    , eventMonitors_(*connection_)
    , layerRenderer_(painter_)
    , sounds_(log)
    , displays_(*connection_, runLoop_)
    , childProcesses_(runLoop_)
    , services_{application_,   runLoop_, userDefaults_,  statusBar_,   windows_,    panels_,     alerts_,
                screens_,       pointer_, hotKeys_,       sessionLock_, appearance_, textMeter_,  updates_,
                eventMonitors_, files_,   layerRenderer_, random_,      sounds_,     thumbnails_,
                displays_,      hardware_, childProcesses_, log} {
    application_.setLastWork([this] { userDefaults_.synchronize(); });
}

LinuxDesktop::~LinuxDesktop() {
    // Background work refers to services that go before the run loop does.
    runLoop_.finishBackgroundWork();
    application_.setLastWork(nullptr);
}

} // namespace rb
