#include "desktops/linux/CaptureAttributes.h"
#include "tests/session/SessionTest.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <xkbcommon/xkbcommon-keysyms.h>

// rookbay-capture on a real screen, driven by a hand, and Rook Bay on the other side.
namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double patience = 15; // seconds, on a busy machine
constexpr const char* chooserClass = "rookbay-capture";
constexpr int lineHeight = 210;

class CaptureTest : public SessionTest {
protected:
    explicit CaptureTest(const SessionOptions& options = {.compositor = true})
        : SessionTest(options) {}

    std::string desktop() { return session().folder() + "/home/Desktop"; }
    std::string inbox() { return session().folder() + "/data/rook-bay/Screenshots"; }
    Program& capture(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> command{CAPTURE_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return session().start(command);
    }
    // Starts it and waits until it asks, with the mouse and the keyboard its own.
    Program& captureByHand(const std::vector<std::string>& arguments) {
        Program& program = capture(arguments);
        EXPECT_TRUE(waitUntil([&] { return chooser() || !program.isRunning(); }, patience));
        EXPECT_TRUE(chooser()) << program.output();
        // The hint says that it is ready for the mouse.
        EXPECT_TRUE(waitUntil([&] { return x().pixel(5, 5) != before_; }, patience));
        return program;
    }
    std::optional<WindowFacts> chooser() {
        const auto found = x().viewableOfClass(chooserClass);
        return found.empty() ? std::nullopt : std::optional(found.front());
    }
    // A picture on the screen in which no two places look alike.
    void paintWallpaper(const std::function<QRgb(int, int)>& colour = wallColour) {
        QImage wall(x().screen().width_in_pixels, x().screen().height_in_pixels, QImage::Format_RGB32);
        for (int y = 0; y < wall.height(); ++y) {
            for (int column = 0; column < wall.width(); ++column) {
                wall.setPixel(column, y, colour(column, y));
            }
        }
        const std::string file = session().folder() + "/wall.png";
        ASSERT_TRUE(wall.save(QString::fromStdString(file)));
        ASSERT_EQ(session().start({"hsetroot", "-full", file}).waitForExit(patience), 0);
        ASSERT_TRUE(waitUntil([&] { return x().pixel(5, 5) == (wall.pixel(5, 5) & 0xffffff); }, patience));
        before_ = x().pixel(5, 5);
    }
    static QRgb wallColour(int column, int y) { return qRgb(64 + column % 192, 64 + y % 192, 64 + (column + y) % 192); }
    // The picture shows exactly what was on the screen there.
    static void expectWallpaper(const std::string& file, int left, int top, int width, int height) {
        const QImage picture(QString::fromStdString(file));
        ASSERT_EQ(picture.size(), QSize(width, height)) << file;
        for (const auto& [column, y] : {std::pair(0, 0), std::pair(width - 1, 0), std::pair(width / 2, height / 2),
                                        std::pair(0, height - 1), std::pair(width - 1, height - 1)}) {
            EXPECT_EQ(picture.pixel(column, y), wallColour(left + column, top + y)) << column << ", " << y;
        }
    }
    static std::vector<std::string> filesIn(const std::string& folder) {
        std::vector<std::string> found;
        if (fs::exists(folder)) {
            for (const auto& entry : fs::directory_iterator(folder)) {
                found.push_back(entry.path());
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    std::string paths() const {
        std::string all;
        for (const auto& path : defaults()["ClotheslinePaths"].toArray()) {
            all += path.toString().toStdString() + "\n";
        }
        return all;
    }
    // Presses at the first place and moves to the second, the button still held.
    void draw(int fromX, int fromY, int toX, int toY) {
        x().movePointer(fromX, fromY);
        x().pressButton();
        x().movePointer((fromX + toX) / 2, (fromY + toY) / 2);
        x().movePointer(toX, toY);
    }
    // A window of one colour without decorations of its own program's.
    WindowFacts colouredWindow(const std::string& title, const std::string& colour, int left, int top) {
        session().start({"xterm", "-T", title, "-bg", colour, "-geometry",
                         "40x10+" + std::to_string(left) + "+" + std::to_string(top)});
        EXPECT_TRUE(waitUntil([&] { return x().viewableTitled(title).has_value(); }, patience));
        return x().viewableTitled(title).value_or(WindowFacts{});
    }

    // A window that no window manager touches, with a border of `border` pixels in red.
    xcb_window_t bareWindow(int left, int top, std::uint32_t colour, std::uint16_t border = 0) {
        return ownWindow({.left = left, .top = top, .border = border}, XCB_COPY_FROM_PARENT, XCB_COPY_FROM_PARENT,
                         XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT, {colour, 0xff0000, 1});
    }
    // One that the screen behind it shines through; the colour is premultiplied.
    xcb_window_t translucentWindow(int left, int top, std::uint32_t colour) {
        constexpr std::uint8_t depth = 32;
        for (auto depths = xcb_screen_allowed_depths_iterator(&x().screen()); depths.rem > 0; xcb_depth_next(&depths)) {
            if (depths.data->depth == depth) {
                const xcb_visualid_t visual = xcb_depth_visuals_iterator(depths.data).data->visual_id;
                const xcb_colormap_t colours = xcb_generate_id(x().connection());
                xcb_create_colormap(x().connection(), XCB_COLORMAP_ALLOC_NONE, colours, x().root(), visual);
                return ownWindow({.left = left, .top = top}, depth, visual,
                                 XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
                                 {colour, 0, 1, colours});
            }
        }
        ADD_FAILURE() << "no translucent windows here";
        return XCB_WINDOW_NONE;
    }
    struct Place {
        int left = 0;
        int top = 0;
        std::uint16_t border = 0;
    };
    xcb_window_t ownWindow(const Place& place, std::uint8_t depth, xcb_visualid_t visual, std::uint32_t mask,
                           const std::vector<std::uint32_t>& values) {
        const xcb_window_t made = xcb_generate_id(x().connection());
        xcb_create_window(x().connection(), depth, made, x().root(), static_cast<std::int16_t>(place.left),
                          static_cast<std::int16_t>(place.top), 200, 100, place.border, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          visual, mask, values.data());
        xcb_map_window(x().connection(), made);
        x().sync();
        return made;
    }
    void makeActive(xcb_window_t window) {
        xcb_change_property(x().connection(), XCB_PROP_MODE_REPLACE, x().root(), x().atom("_NET_ACTIVE_WINDOW"),
                            XCB_ATOM_WINDOW, 32, 1, &window);
        x().sync();
    }

    std::uint32_t before_ = 0;
};

TEST_F(CaptureTest, ARegionFliesOntoTheLine) {
    paintWallpaper();
    session().writeDefaults(R"({"ClotheslineInbox": true})");
    startRookBay();
    ASSERT_TRUE(waitUntil([&] { return fs::exists(inbox()); }, patience));
    EventLog log(session().display());
    Program& program = captureByHand({"--region"});
    draw(300, 320, 700, 560);
    x().releaseButton();
    ASSERT_EQ(program.waitForExit(patience), 0) << program.output();
    EXPECT_FALSE(chooser());
    const auto files = filesIn(inbox());
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(program.output(), files[0] + "\n");
    EXPECT_TRUE(fs::path(files[0]).filename().string().starts_with("Screenshot ")) << files[0];
    expectWallpaper(files[0], 300, 320, 401, 241);
    EXPECT_TRUE(readAttribute(files[0], captureMarkAttribute));
    EXPECT_EQ(numbersOfPropertyList(readAttribute(files[0], captureRectAttribute).value_or("")),
              (PropertyArray{300.0, 320.0, 401.0, 241.0}));
    // The line comes down, a panel as large as the screen carries the flight, and the card stays.
    const auto ofHeight = [](int height) {
        return [height](const SessionEvent& event) {
            return event.kind == SessionEventKind::Mapped && event.window.className == panelClass &&
                   event.window.height == height;
        };
    };
    EXPECT_TRUE(log.waitFor(ofHeight(lineHeight), patience));
    EXPECT_TRUE(log.waitFor(ofHeight(x().screen().height_in_pixels), patience)) << "no flight";
    EXPECT_TRUE(waitUntil([&] { return paths() == files[0] + "\n"; }, patience)) << paths();
    EXPECT_TRUE(filesIn(desktop()).empty());
}

TEST_F(CaptureTest, CancellingLeavesNothingBehind) {
    paintWallpaper();
    const auto nothing = [&] {
        EXPECT_TRUE(waitUntil([&] { return !chooser(); }, patience));
        EXPECT_TRUE(filesIn(desktop()).empty());
        EXPECT_TRUE(waitUntil([&] { return x().pixel(5, 5) == before_; }, patience));
        EXPECT_TRUE(x().grabKey(XKB_KEY_F5)) << "the keyboard is free again";
        x().ungrabKey(XKB_KEY_F5);
    };
    Program& escaped = captureByHand({"--region"});
    Program& second = capture({"--window"});
    EXPECT_EQ(second.waitForExit(patience), 4) << "one at a time";
    draw(300, 300, 500, 500);
    x().tapKey(XKB_KEY_Escape);
    EXPECT_EQ(escaped.waitForExit(patience), 3);
    x().releaseButton();
    nothing();
    Program& clicked = captureByHand({"--region"});
    x().click(600, 400); // hardly a region
    EXPECT_TRUE(staysTrue([&] { return clicked.isRunning(); }, 0.3));
    x().click(600, 400, 3);
    EXPECT_EQ(clicked.waitForExit(patience), 3);
    nothing();
    Program& killed = captureByHand({"--window"});
    killed.signal(SIGKILL);
    killed.waitForExit(patience);
    nothing();
    EXPECT_EQ(captureByHand({"--region"}).isRunning(), true) << "whoever was killed blocks nobody";
}

TEST_F(CaptureTest, SpaceMovesTheRegionAndReturnTakesIt) {
    paintWallpaper();
    const std::string file = session().folder() + "/shot.png";
    writeFile(file, "the user's own");
    Program& program = captureByHand({"--region", "--output", file});
    draw(400, 300, 599, 399);
    x().pressKey(XKB_KEY_space);
    x().movePointer(700, 500);
    x().releaseKey(XKB_KEY_space);
    x().tapKey(XKB_KEY_Right);
    x().tapKey(XKB_KEY_Down, {XKB_KEY_Shift_L});
    // 102 pixels on, the edge is at its place: the white line lies right outside it.
    EXPECT_TRUE(waitUntil([&] { return x().pixel(600, 511) == 0xffffff; }, patience));
    x().tapKey(XKB_KEY_Return);
    ASSERT_EQ(program.waitForExit(patience), 0) << program.output();
    x().releaseButton();
    EXPECT_EQ(readFile(file), "the user's own");
    EXPECT_EQ(program.output(), session().folder() + "/shot (2).png\n");
    expectWallpaper(session().folder() + "/shot (2).png", 501, 401, 201, 110);
}

TEST_F(CaptureTest, AWindowComesWholeAlthoughAnotherCoversIt) {
    paintWallpaper();
    const WindowFacts below = colouredWindow("below", "#204060", 100, 150);
    const WindowFacts above = colouredWindow("above", "#802020", 200, 220);
    const std::string folder = session().folder() + "/shots";
    fs::create_directory(folder);
    Program& program = captureByHand({"--region", "--output", folder});
    x().tapKey(XKB_KEY_space); // to choose a window instead
    x().click(below.x + 20, below.y + 40);
    ASSERT_EQ(program.waitForExit(patience), 0) << program.output();
    ASSERT_EQ(filesIn(folder).size(), 1U);
    const QImage picture(QString::fromStdString(filesIn(folder)[0]));
    EXPECT_GE(picture.width(), below.width);
    EXPECT_GT(picture.height(), below.height) << "with its title bar";
    // Where the other window covers it.
    EXPECT_EQ(picture.pixelColor(picture.width() - 30, picture.height() - 30).name(), "#204060");
    Program& active = capture({"--active-window", "--output", folder + "/active.jpg"});
    ASSERT_EQ(active.waitForExit(patience), 0) << active.output();
    const QImage front(QString::fromStdString(folder + "/active.jpg"));
    EXPECT_GE(front.width(), above.width);
    EXPECT_NEAR(front.pixelColor(front.width() - 30, front.height() - 30).red(), 0x80, 8);
}

TEST_F(CaptureTest, AWindowComesWithItsBorderAlthoughAnotherCoversIt) {
    paintWallpaper();
    const xcb_window_t below = bareWindow(300, 300, 0x204060, 6);
    EXPECT_TRUE(waitUntil([&] { return x().pixel(302, 302) == 0xff0000; }, patience));
    bareWindow(400, 350, 0x802020);
    EXPECT_TRUE(waitUntil([&] { return x().pixel(450, 400) == 0x802020; }, patience));
    makeActive(below);
    const std::string file = session().folder() + "/bordered.png";
    Program& program = capture({"--active-window", "--output", file});
    ASSERT_EQ(program.waitForExit(patience), 0) << program.output();
    const QImage picture(QString::fromStdString(file));
    ASSERT_EQ(picture.size(), QSize(212, 112));
    EXPECT_EQ(picture.pixel(2, 2), qRgb(0xff, 0, 0));
    EXPECT_EQ(picture.pixel(209, 109), qRgb(0xff, 0, 0));
    EXPECT_EQ(picture.pixel(6, 6), qRgb(0x20, 0x40, 0x60));
    EXPECT_EQ(picture.pixel(180, 90), qRgb(0x20, 0x40, 0x60)) << "where the other one covers it";
}

TEST_F(CaptureTest, WhatShinesThroughAWindowIsWhiteInAFileWithoutTransparency) {
    paintWallpaper();
    const xcb_window_t below = translucentWindow(300, 300, 0x80000080);
    EXPECT_TRUE(waitUntil([&] { return x().pixel(350, 350) != (wallColour(350, 350) & 0xffffff); }, patience));
    bareWindow(400, 350, 0x802020);
    EXPECT_TRUE(waitUntil([&] { return x().pixel(450, 400) == 0x802020; }, patience));
    makeActive(below);
    const std::string file = session().folder() + "/shot.jpg";
    Program& program = capture({"--active-window", "--output", file});
    ASSERT_EQ(program.waitForExit(patience), 0) << program.output();
    const QColor seen = QImage(QString::fromStdString(file)).pixelColor(150, 80);
    EXPECT_NEAR(seen.red(), 0x7f, 8);
    EXPECT_NEAR(seen.green(), 0x7f, 8);
    EXPECT_NEAR(seen.blue(), 0xff, 8);
}

TEST_F(CaptureTest, TheNextOneAsksWhileTheLastOneIsStillBeingDelivered) {
    paintWallpaper();
    // Whoever should read the path doesn't.
    const char* reader = "import os, subprocess, sys\n"
                         "out, into = os.pipe()\n"
                         "os.set_blocking(into, False)\n"
                         "try:\n"
                         "    while True: os.write(into, b'x')\n"
                         "except BlockingIOError: os.set_blocking(into, True)\n"
                         "sys.exit(subprocess.call(sys.argv[1:], stdout=into))\n";
    const std::string file = session().folder() + "/first.png";
    session().start({"python3", "-c", reader, CAPTURE_PROGRAM, "--region", "--output", file});
    ASSERT_TRUE(waitUntil([&] { return chooser() && x().pixel(5, 5) != before_; }, patience));
    draw(300, 320, 700, 560);
    x().releaseButton();
    ASSERT_TRUE(waitUntil([&] { return fs::exists(file); }, patience));
    EXPECT_EQ(session().processes("rookbay-capture").size(), 1U) << "it still waits";
    Program& second = captureByHand({"--region"});
    x().tapKey(XKB_KEY_Escape);
    EXPECT_EQ(second.waitForExit(patience), 3) << second.output();
}

TEST_F(CaptureTest, TheFileComesAlthoughTheClipboardCanNotBeHad) {
    // Nothing that makes a picture file small: the clipboard's is larger than files may be.
    std::uint32_t state = 1;
    paintWallpaper([&state](int, int) {
        state = state * 1664525 + 1013904223;
        return state | 0xff000000;
    });
    const std::string file = session().folder() + "/shot.jpg";
    Program& program = session().start({"sh", "-c", "trap '' XFSZ; ulimit -f 4096; exec \"$0\" \"$@\"", CAPTURE_PROGRAM,
                                        "--clipboard", "--output", file});
    EXPECT_EQ(program.waitForExit(patience), 1);
    EXPECT_NE(program.output().find("无法拷贝到剪贴板"), std::string::npos) << program.output();
    EXPECT_NE(program.output().find(file + "\n"), std::string::npos) << program.output();
    EXPECT_EQ(QImage(QString::fromStdString(file)).size(), QSize(1280, 800));
}

TEST_F(CaptureTest, TheClipboardKeepsThePictureAndTheHistoryHasIt) {
    paintWallpaper();
    startRookBay();
    const std::string lock = session().folder() + "/lock";
    Program& program =
        session().start({"sh", "-c", "exec 9>\"$1\"; flock 9; exec \"$0\" --clipboard", CAPTURE_PROGRAM, lock});
    ASSERT_EQ(program.waitForExit(patience), 0) << program.output();
    EXPECT_EQ(session().start({"flock", "-n", lock, "true"}).waitForExit(patience), 0)
        << "the script's own lock is free";
    const std::string file = session().folder() + "/pasted.png";
    Program& paste = session().start({"sh", "-c", "xclip -selection clipboard -t image/png -o >" + file});
    EXPECT_EQ(paste.waitForExit(patience), 0) << paste.output();
    const QImage pasted(QString::fromStdString(file));
    ASSERT_EQ(pasted.size(), QSize(1280, 800));
    EXPECT_EQ(pasted.pixel(640, 700), wallColour(640, 700));
    EXPECT_TRUE(filesIn(desktop()).empty());
    const std::string archive = session().folder() + "/data/rook-bay/Clipboard.archive";
    EXPECT_TRUE(waitUntil([&] { return readFile(archive).value_or("").find("IHDR") != std::string::npos; }, patience));
    EXPECT_EQ(session().processes("rookbay-capture").size(), 1U);
    session().start({"sh", "-c", "printf other | xclip -selection clipboard -i"});
    EXPECT_TRUE(waitUntil([&] { return session().processes("rookbay-capture").empty(); }, patience))
        << "it stays after another program copied";
}

TEST_F(CaptureTest, TheSettingsDecideAndFaultsAreTold) {
    paintWallpaper();
    const std::string settings = session().configFolder() + "/rook-bay/screencapture.json";
    const std::string pictures = session().folder() + "/home/Pictures";
    fs::create_directory(pictures);
    writeFile(settings, R"({"location": "~/Pictures", "show-thumbnail": false, "type": "jpg"})");
    session().environment["LANG"] = "zh_CN.UTF-8";
    ASSERT_EQ(capture().waitForExit(patience), 0);
    ASSERT_EQ(filesIn(pictures).size(), 1U);
    const std::string name = fs::path(filesIn(pictures)[0]).filename();
    EXPECT_TRUE(name.starts_with("截屏20") && name.ends_with(".jpg")) << name;
    fs::remove_all(pictures);
    fs::create_symlink("/nowhere", pictures);
    ASSERT_EQ(capture({"--all-displays"}).waitForExit(patience), 0);
    EXPECT_EQ(filesIn(desktop()).size(), 1U) << "the Desktop stands in";
    writeFile(settings, "{");
    Program& broken = capture();
    EXPECT_EQ(broken.waitForExit(patience), 0);
    EXPECT_NE(broken.output().find("内容有误"), std::string::npos);
    EXPECT_EQ(readFile(settings), "{");
    // A folder that takes nothing.
    Program& refused = capture({"--output", "/proc/shot.png"});
    EXPECT_EQ(refused.waitForExit(patience), 1);
    EXPECT_NE(refused.output().find("无法存到“/proc”"), std::string::npos) << refused.output();
    Environment blind = session().environment;
    blind.erase("DISPLAY");
    Program& nowhere = session().start({CAPTURE_PROGRAM}, blind);
    EXPECT_EQ(nowhere.waitForExit(patience), 1);
    EXPECT_NE(nowhere.output().find("DISPLAY"), std::string::npos);
    EXPECT_EQ(capture({"--everything"}).waitForExit(patience), 2);
}

TEST_F(CaptureTest, TheThumbnailShowsWhatWasSavedAndIsInNoPicture) {
    paintWallpaper();
    const auto thumbnail = [&] {
        const auto found = x().viewableOfClass("rookbay-thumbnail");
        return found.empty() ? std::nullopt : std::optional(found.front());
    };
    const std::string opened = session().folder() + "/opened";
    const std::string opener = session().folder() + "/bin/xdg-open";
    fs::create_directory(session().folder() + "/bin");
    writeFile(opener, "#!/bin/sh\necho \"$1\" >" + opened + "\n");
    fs::permissions(opener, fs::perms::owner_all);
    session().environment["PATH"] = session().folder() + "/bin:" + session().environment["PATH"];
    ASSERT_EQ(capture().waitForExit(patience), 0);
    ASSERT_TRUE(waitUntil([&] { return thumbnail().has_value(); }, patience));
    EXPECT_GT(thumbnail()->x, 1000);
    EXPECT_GT(thumbnail()->y, 600);
    // The next capture shows the wallpaper where the thumbnail is now.
    const std::string second = session().folder() + "/second.png";
    ASSERT_EQ(capture({"--output", second}).waitForExit(patience), 0);
    expectWallpaper(second, 0, 0, 1280, 800);
    const QImage picture(QString::fromStdString(second));
    EXPECT_EQ(picture.pixel(1150, 700), wallColour(1150, 700));
    EXPECT_EQ(picture.pixel(1240, 760), wallColour(1240, 760));
    ASSERT_TRUE(waitUntil([&] { return thumbnail().has_value(); }, patience));
    x().click(thumbnail()->x + thumbnail()->width / 2, thumbnail()->y + thumbnail()->height / 2);
    EXPECT_TRUE(
        waitUntil([&] { return readFile(opened).value_or("").find("second.png") != std::string::npos; }, patience));
    EXPECT_TRUE(waitUntil([&] { return !thumbnail() && session().processes("rookbay-capture").empty(); }, patience));
}

TEST_F(CaptureTest, AThumbnailMayBeDraggedAsLongAsOneLikes) {
    paintWallpaper();
    const auto shown = [&] { return !x().viewableOfClass("rookbay-thumbnail").empty(); };
    ASSERT_EQ(capture().waitForExit(patience), 0);
    ASSERT_TRUE(waitUntil(shown, patience));
    const WindowFacts thumbnail = x().viewableOfClass("rookbay-thumbnail").front();
    draw(thumbnail.x + thumbnail.width / 2, thumbnail.y + thumbnail.height / 2, thumbnail.x - 300, thumbnail.y - 200);
    for (int step = 0; step < 5; ++step) {
        x().movePointer(thumbnail.x - 300 - step, thumbnail.y - 200);
    }
    // Longer than it is shown otherwise.
    EXPECT_TRUE(staysTrue(shown, 6.5));
    x().releaseButton();
    EXPECT_TRUE(waitUntil([&] { return !shown() && session().processes("rookbay-capture").empty(); }, patience));
}

class CaptureDisplaysSessionTest : public CaptureTest {
protected:
    CaptureDisplaysSessionTest()
        : CaptureTest({}) {}
};

TEST_F(CaptureDisplaysSessionTest, AWindowBeyondTheScreenIsNoPictureOfTheScreen) {
    makeActive(bareWindow(3000, 100, 0x204060));
    const std::string file = session().folder() + "/shot.png";
    Program& program = capture({"--active-window", "--output", file});
    EXPECT_EQ(program.waitForExit(patience), 1);
    EXPECT_NE(program.output().find("无法读取屏幕"), std::string::npos) << program.output();
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(CaptureDisplaysSessionTest, EachDisplayAloneAndBothTogether) {
    paintWallpaper();
    for (const std::vector<std::string>& monitor : {std::vector<std::string>{"LEFT", "640/200x800/200+0+0", "screen"},
                                                    {"RIGHT", "640/200x800/200+640+0", "none"}}) {
        EXPECT_EQ(session().start({"xrandr", "--setmonitor", monitor[0], monitor[1], monitor[2]}).waitForExit(patience),
                  0);
    }
    const std::string folder = session().folder();
    x().movePointer(900, 400);
    ASSERT_EQ(capture({"--output", folder + "/one.png"}).waitForExit(patience), 0);
    expectWallpaper(folder + "/one.png", 640, 0, 640, 800);
    ASSERT_EQ(capture({"--all-displays", "--output", folder + "/all.png"}).waitForExit(patience), 0);
    expectWallpaper(folder + "/all.png", 0, 0, 1280, 800);
    Program& across = captureByHand({"--region", "--output", folder + "/across.png"});
    draw(500, 200, 799, 399);
    x().releaseButton();
    ASSERT_EQ(across.waitForExit(patience), 0);
    expectWallpaper(folder + "/across.png", 500, 200, 300, 200);
}

} // namespace

} // namespace rb
