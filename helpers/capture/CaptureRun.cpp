#include "helpers/capture/CaptureRun.h"

#include "desktops/linux/Log.h"
#include "desktops/linux/RunLoop.h"
#include "desktops/linux/XConnection.h"
#include "helpers/capture/CaptureDisplays.h"
#include "helpers/capture/CaptureLock.h"
#include "helpers/capture/Chooser.h"
#include "helpers/capture/Clipboard.h"
#include "helpers/capture/Destination.h"
#include "helpers/capture/FileName.h"
#include "helpers/capture/Notice.h"
#include "helpers/capture/ScreenPixels.h"
#include "helpers/capture/Thumbnail.h"
#include "helpers/capture/WindowPlaces.h"

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QImageWriter>
#include <QPainter>
#include <QStandardPaths>

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <sys/stat.h>
#include <thread>
#include <utility>

namespace rb {

namespace {

struct Shot {
    QImage picture = {};
    PixelRect area = {}; // of the screen
};

// Ends before Qt's application does, with an exit code where nothing was taken.
struct Taking {
    Shot shot = {};
    int exit = CaptureExit::Taken;
    std::string error = {};
};

Taking failed(const std::string& error, int exit = CaptureExit::Failed) {
    return {.exit = exit, .error = error};
}

// Qt's application; never with our arguments, which it would search for options of its own.
class Application {
public:
    Application() {
        qunsetenv("SESSION_MANAGER"); // this program is none that a session restores
        QCoreApplication::setApplicationName(QStringLiteral("rookbay-capture"));
        QGuiApplication::setDesktopFileName(QStringLiteral("rookbay-capture"));
        QGuiApplication::setQuitOnLastWindowClosed(false);
        application_.emplace(count_, words_.data());
    }

private:
    int count_ = 3;
    std::array<char, 16> name_ = {"rookbay-capture"};
    std::array<char, 10> option_ = {"-platform"};
    std::array<char, 4> platform_ = {"xcb"};
    std::array<char*, 4> words_ = {name_.data(), option_.data(), platform_.data(), nullptr};
    std::optional<QGuiApplication> application_;
};

// As it is seen, or, when something covers it and its own contents can be had, those.
Shot windowShot(XConnection& connection, const ScreenPixels& pixels, const std::vector<WindowPlace>& windows,
                const WindowPlace& window, const QImage& screen) {
    if (isComposed(connection) && isCovered(windows, window, pixels.bounds())) {
        // A window's own coordinates begin inside its border.
        const PixelRect inside{window.area.x - window.frame.x - window.border,
                               window.area.y - window.frame.y - window.border, window.area.width, window.area.height};
        if (const QImage own = pixels.readWindow(window.window, inside); !own.isNull()) {
            return {.picture = own, .area = window.area};
        }
    }
    const PixelRect seen = intersection(window.area, pixels.bounds());
    if (isEmpty(seen)) {
        return {}; // without a compositor nobody knows what is in it
    }
    return {.picture = screen.copy(seen.x, seen.y, seen.width, seen.height), .area = seen};
}

PixelPoint pointerPlace(XConnection& connection) {
    const XReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection.get(), xcb_query_pointer(connection.get(), connection.root()), nullptr));
    return pointer ? PixelPoint{pointer->root_x, pointer->root_y} : PixelPoint{};
}

Taking takeAtOnce(XConnection& connection, const ScreenPixels& pixels, CaptureArea area,
                  const std::vector<CaptureDisplay>& displays) {
    if (area == CaptureArea::ActiveWindow) {
        const QImage screen = pixels.read(connection.root(), pixels.bounds());
        const auto windows = readWindowPlaces(connection, XCB_WINDOW_NONE);
        const WindowPlace* active = activeWindow(connection, windows);
        if (active == nullptr) {
            return failed("没有当前窗口");
        }
        return {.shot = windowShot(connection, pixels, windows, *active, screen)};
    }
    const PixelRect wanted = intersection(
        area == CaptureArea::AllDisplays ? unionOf(displays) : displayAt(displays, pointerPlace(connection)).pixels,
        pixels.bounds());
    return {.shot = {.picture = pixels.read(connection.root(), wanted), .area = wanted}};
}

Taking ask(XConnection& connection, const ScreenPixels& pixels, Chooser& chooser,
           const std::vector<CaptureDisplay>& displays) {
    CaptureChoice choice;
    chooser.ask(displays, [&](const CaptureChoice& made) {
        choice = made;
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    if (choice.kind == CaptureChoice::Kind::NoMouse) {
        return failed("另一个程序占用着鼠标，请关闭打开的菜单后重试");
    }
    if (choice.kind == CaptureChoice::Kind::Cancelled) {
        return failed({}, CaptureExit::Cancelled);
    }
    if (choice.window) {
        return {.shot = windowShot(connection, pixels, chooser.windows(), *choice.window, chooser.picture())};
    }
    const PixelRect& area = choice.area;
    return {.shot = {.picture = chooser.picture().copy(area.x, area.y, area.width, area.height), .area = area}};
}

// On white, for files that know no transparency: they would have black there.
QImage opaque(const QImage& picture) {
    QImage flat(picture.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter(&flat).drawImage(0, 0, picture);
    return flat;
}

// The bytes of the picture file; empty when it can't be made.
std::string encoded(const QImage& picture, const std::string& type) {
    // Quality is effort for PNG: a third of the default's time for a few percent more bytes.
    constexpr int effort = 70;
    constexpr int quality = 90;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, QByteArray::fromStdString(type));
    writer.setQuality(type == "png" ? effort : quality);
    return writer.write(type == "jpg" && picture.hasAlphaChannel() ? opaque(picture) : picture) ? bytes.toStdString()
                                                                                                : std::string();
}

// The Desktop of a user who has none yet; where that fails, saving says why.
void makeFolder(const std::string& path) {
    constexpr mode_t asUsual = 0755;
    (void)mkdir(path.c_str(), asUsual);
}

std::string nameForNow() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    return captureName(parts, speaksChinese([](const char* name) { return qgetenv(name).toStdString(); }));
}

// The path of the file, which is printed; empty when there is none.
std::string save(const CaptureDestination& to, const CaptureFile& file) {
    const std::string name = to.name.empty() ? nameForNow() : to.name;
    SavedCapture saved = saveCapture(to.folder, name, to.extension, file);
    if (saved.path.empty() && !to.fallback.empty()) {
        const std::string reason = saved.error;
        makeFolder(to.fallback);
        saved = saveCapture(to.fallback, name, to.extension, file);
        if (!saved.path.empty()) {
            tellUser("无法存到“" + to.folder + "”（" + reason + "），已存到桌面");
        }
    }
    if (saved.path.empty()) {
        tellUser("无法存到“" + to.folder + "”：" + saved.error);
    } else {
        std::printf("%s\n", saved.path.c_str());
        std::fflush(stdout);
    }
    return saved.path;
}

int deliver(const Shot& shot, CaptureDestination to, bool thumbnail, const std::vector<CaptureDisplay>& displays) {
    int result = CaptureExit::Taken;
    if (to.toClipboard && !putOnClipboard(encoded(shot.picture, "png"))) {
        tellUser("无法拷贝到剪贴板");
        result = CaptureExit::Failed; // a file that was asked for comes all the same
    }
    if (!to.toFile) {
        return result;
    }
    CaptureFile file{.bytes = encoded(shot.picture, to.type), .taken = pointsOf(shot.area, displays)};
    if (file.bytes.empty() && to.type != "png") {
        // Rather another format than no picture.
        tellUser("无法存为 " + to.type + "，已存为 png");
        to.type = to.extension = "png";
        file.bytes = encoded(shot.picture, to.type);
    }
    if (file.bytes.empty()) {
        tellUser("无法生成图片");
        return CaptureExit::Failed;
    }
    const std::string path = save(to, file);
    if (path.empty()) {
        return CaptureExit::Failed;
    }
    if (thumbnail) {
        showThumbnail(path, {shot.area.x + shot.area.width / 2, shot.area.y + shot.area.height / 2});
    }
    return result;
}

CapturePlaces places() {
    const std::string desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toStdString();
    return {.home = QDir::homePath().toStdString(), .desktop = desktop, .working = QDir::currentPath().toStdString()};
}

} // namespace

int runCapture(const CaptureArguments& arguments) {
    const auto fail = [](const std::string& error, int exit = CaptureExit::Failed) {
        tellUser(error);
        return exit;
    };
    // Whatever would make the capture useless is told before the user chooses anything.
    std::string complaint;
    const CaptureSettings settings = loadCaptureSettings([&](const std::string& text) { complaint = text; });
    const CapturePlaces folders = places();
    const CaptureDestination to = captureDestination(arguments, settings, folders);
    if (!to.error.empty()) {
        return fail(to.error);
    }
    if (to.toFile && to.folder == folders.desktop) {
        makeFolder(to.folder);
    }
    const auto connection = XConnection::open();
    if (!connection) {
        return fail("无法连接到图形显示。截图需要 X11：请检查环境变量 DISPLAY");
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(arguments.delay));

    std::vector<CaptureDisplay> displays = readDisplays(*connection);
    const auto pixels = ScreenPixels::of(*connection);
    if (belongsToWayland(displays)) {
        return fail("Wayland 会话不允许程序读取屏幕，请使用桌面自带的截图程序");
    }
    if (!pixels) {
        return fail("无法读取这种显示的画面");
    }
    CaptureLock lock(*connection);
    const bool asking = arguments.area == CaptureArea::Region || arguments.area == CaptureArea::Window;
    if (asking ? !lock.take() : lock.isTaken()) {
        return fail("另一次截图正在进行", CaptureExit::Busy);
    }
    putThumbnailAway(*connection);
    // The picture first: Qt's application, which takes much longer, comes when the screen stands still already.
    LinuxLog log;
    LinuxRunLoop loop(log);
    std::optional<Chooser> chooser;
    Taking taking;
    if (asking) {
        chooser.emplace(*connection, *pixels, loop,
                        arguments.area == CaptureArea::Region ? Chooser::Mode::Region : Chooser::Mode::Window);
        if (!chooser->freeze()) {
            return fail("无法读取屏幕");
        }
    } else {
        taking = takeAtOnce(*connection, *pixels, arguments.area, displays);
    }
    const Application application;
    takeRatiosFromQt(displays);
    if (chooser) {
        taking = ask(*connection, *pixels, *chooser, displays);
        chooser.reset();
        // The screen is as before: the next one may ask while this one is being saved, and a thumbnail may show.
        lock.release();
    }
    if (!complaint.empty()) {
        tellUser(complaint);
    }
    if (taking.exit == CaptureExit::Taken && taking.shot.picture.isNull()) {
        taking = failed("无法读取屏幕");
    }
    if (taking.exit == CaptureExit::Taken) {
        return deliver(taking.shot, to, settings.thumbnail, displays);
    }
    return taking.error.empty() ? taking.exit : fail(taking.error, taking.exit);
}

} // namespace rb
