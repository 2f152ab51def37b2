#include "helpers/capture/Clipboard.h"

#include "desktops/linux/Log.h"
#include "desktops/linux/RunLoop.h"
#include "desktops/linux/SelectionOwner.h"
#include "desktops/linux/UniqueFd.h"
#include "desktops/linux/XConnection.h"
#include "helpers/capture/Arguments.h"
#include "helpers/capture/OwnProcess.h"
#include "helpers/shared/WriteAll.h"

#include <QCoreApplication>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

constexpr int patience = 5000; // milliseconds until the clipboard must be ours

// How often to see whether a program that began to take the picture has all of it, once the clipboard has changed.
constexpr double lastPieces = 0.5; // seconds
// Whether the X server is still there.
constexpr double lookInterval = 10; // seconds
constexpr double lookTolerance = 5;

SharedBytes readAll(int fd) {
    auto bytes = std::make_shared<Bytes>();
    std::array<std::uint8_t, 65536> buffer{};
    for (;;) {
        const ssize_t count = read(fd, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0 && !bytes->empty() ? bytes : nullptr;
        }
        bytes->insert(bytes->end(), buffer.begin(), buffer.begin() + count);
    }
}

} // namespace

bool putOnClipboard(const std::string& png) {
    const UniqueFd picture(memfd_create("rookbay-capture", MFD_CLOEXEC));
    std::array<int, 2> ends{-1, -1};
    if (!picture || !writeAll(picture.get(), png) || lseek(picture.get(), 0, SEEK_SET) != 0 ||
        pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    const UniqueFd answer(ends[0]);
    UniqueFd told(ends[1]);
    const bool started = startAgain({serveClipboardCommand}, picture.get(), told.get());
    told = UniqueFd();
    pollfd waiting{.fd = answer.get(), .events = POLLIN, .revents = 0};
    char byte = 0;
    return started && poll(&waiting, 1, patience) == 1 && read(answer.get(), &byte, 1) == 1;
}

int serveClipboard() {
    const SharedBytes picture = readAll(STDIN_FILENO);
    if (!picture || chdir("/") != 0) {
        return CaptureExit::Failed;
    }
    auto connection = XConnection::open();
    if (!connection) {
        return CaptureExit::Failed;
    }
    prctl(PR_SET_NAME, "rookbay-capture"); // else it is called after the way it was started
    std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    int count = 1;
    std::array<char, 20> program{"rookbay-capture"};
    std::array<char*, 2> words{program.data(), nullptr};
    const QCoreApplication application(count, words.data());
    LinuxLog log;
    LinuxRunLoop loop(log);
    SelectionOwner owner(*connection, loop, "CLIPBOARD");
    if (!owner.take({{"image/png", "image/png", [picture] { return PromisedBytes::settled(picture); }}})) {
        return CaptureExit::Failed;
    }
    // Whoever started us may go on.
    if (write(STDOUT_FILENO, "+", 1) != 1) {
        return CaptureExit::Failed;
    }
    const UniqueFd nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    dup2(nothing.get(), STDIN_FILENO);
    dup2(nothing.get(), STDOUT_FILENO);

    Handle end;
    const Handle events = connection->onEvent([&](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != XCB_SELECTION_CLEAR) {
            return;
        }
        const auto cookie = xcb_get_selection_owner(connection->get(), connection->atom("CLIPBOARD"));
        const XReply<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(connection->get(), cookie, nullptr));
        connection->deliverQueuedEvents();
        if (!reply || reply->owner != owner.window()) {
            end = loop.every(lastPieces, lastPieces, [&] {
                if (!owner.isSending()) {
                    QCoreApplication::quit();
                }
            });
        }
    });
    const Handle look = loop.every(lookInterval, lookTolerance, [&] {
        if (xcb_connection_has_error(connection->get()) != 0) {
            QCoreApplication::quit();
        }
    });
    return QCoreApplication::exec();
}

} // namespace rb
