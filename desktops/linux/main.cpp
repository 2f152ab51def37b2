#include "app/Main.h"
#include "desktops/linux/CommandLine.h"
#include "desktops/linux/Desktop.h"
#include "desktops/linux/Files.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/Log.h"
#include "desktops/linux/RunLoop.h"
#include "desktops/linux/ScreenshotPreferences.h"
#include "desktops/linux/SingleInstance.h"
#include "desktops/linux/UserDefaults.h"
#include "desktops/linux/XConnection.h"
#include "screenshots/Inbox.h"

#include <cstdio>
#include <filesystem>
#include <malloc.h>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

// After a run that couldn't do it itself. True when nothing of the takeover is left.
bool restoreScreenshotSettings(rb::Log& log) {
    rb::LinuxRunLoop loop(log);
    rb::LinuxUserDefaults defaults(rb::configFolder(), loop, log);
    rb::LinuxScreenshotPreferences preferences(defaults, log);
    const rb::LinuxFiles files;
    rb::RBInbox inbox(preferences, defaults, files);
    inbox.restore();
    defaults.synchronize();
    return !inbox.isApplied();
}

// Copied pictures are large and short-lived on their way into the archive. The allocator would keep such blocks after
// it has seen a few; with a fixed limit those above it go back to the system, and buffers of a frame still stay.
void giveLargeBlocksBack() {
    constexpr int limit = 1'572'864;  // bytes
    mallopt(M_MMAP_THRESHOLD, limit); // NOLINT(concurrency-mt-unsafe): before there are threads
}

} // namespace

// Cheapest question first: most ends of a start need neither a display nor Qt's application.
int main(int count, char** words) {
    constexpr int success = 0;
    constexpr int failure = 1;
    constexpr int misuse = 2;

    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    std::error_code unreachable; // then relative paths don't name anything
    const rb::CommandLine line = rb::readCommandLine(arguments, std::filesystem::current_path(unreachable).string());
    if (line.action == rb::CommandLine::Action::Refuse) {
        std::fputs(line.text.c_str(), stderr);
        return misuse;
    }
    if (line.action == rb::CommandLine::Action::RestoreScreenshotSettings) {
        rb::LinuxLog log;
        return restoreScreenshotSettings(log) ? success : failure;
    }
    if (line.action != rb::CommandLine::Action::Run) {
        return std::fputs(line.text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? failure : success;
    }

    giveLargeBlocksBack();
    rb::LinuxLog log;
    rb::SingleInstance instance(log);
    switch (instance.claim(line.arguments)) {
    case rb::SingleInstance::Outcome::First:
        break;
    case rb::SingleInstance::Outcome::HandedOver:
        return success;
    case rb::SingleInstance::Outcome::Failed:
        std::fprintf(stderr, "rookbay：%s\n", instance.message().c_str());
        return failure;
    }
    auto connection = rb::XConnection::open();
    if (!connection) {
        std::fputs("rookbay：无法连接到图形显示。Rook Bay 需要 X11（或 Wayland 会话中的 XWayland）："
                   "请检查环境变量 DISPLAY。\n",
                   stderr);
        return failure;
    }
    const rb::LinuxDesktop desktop(line.arguments, std::move(connection), instance, log);
    return rb::runRookBay(desktop.services());
}
