// What captures cost, with the program in a private desktop session: how soon the flight begins after a file is
// complete, what a flight takes of the processor, and what it is to watch a folder with 50,000 files.
// usage: rookbay-capture-costs [--quick]    fewer runs

#include "benchmarks/ProcessCosts.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/Table.h"
#include "tests/session/frame/EventLog.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <QImage>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <sys/xattr.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double inMilliseconds = 1000;
constexpr double quietTime = 0.25; // that the watcher waits after the last write
constexpr int lineHeight = 210;

struct Plan {
    int flights = 12;
    int newFiles = 8;
    int files = 50'000;
    double settle = 6; // seconds
    double idle = 20;
};

void waitFor(const std::string& what, const Session& session, const std::function<bool()>& condition) {
    if (!waitUntil(condition, 30)) {
        throw std::runtime_error("waited in vain for " + what + "\n" + session.logs());
    }
}

void pause(double seconds) {
    (void)staysTrue([] { return true; }, seconds);
}

// A session in which captures go straight onto the line, so through the program's own folder.
class CaptureSession {
public:
    explicit CaptureSession(int files)
        : session({.width = 1920, .height = 1080, .compositor = true})
        , folder(session.folder() + "/data/rook-bay/Screenshots") {
        fs::create_directories(folder);
        for (int i = 0; i < files; ++i) {
            writeFile(folder + "/old-" + std::to_string(i) + ".png", "x");
        }
        pause(files > 0 ? 1.5 : 0); // they are older than the watcher
        session.writeDefaults(R"({"ClotheslineInbox": true})");
        session.start({"xterm", "-geometry", "100x40+300+300", "-e", "ls -lR /usr/include | head -40; sleep 1000"});
        session.x().movePointer(1500, 1000);
        program = &session.start({ROOKBAY_PROGRAM});
        waitFor("the bar", session, [this] { return !session.x().viewableOfClass("rookbay-menubar").empty(); });
        waitFor("the terminal", session, [this] { return !session.x().viewableOfClass("XTerm").empty(); });
        pause(2);
    }

    void waitForQuiet() {
        waitFor("the line's end", session, [this] { return session.x().viewableOfClass("rookbay-panel").empty(); });
    }
    // What the screen shows there now, as a file; attributed as by a program that knows where it was.
    std::string picture(const QRect& rect) {
        const std::string all = session.folder() + "/screen.png";
        const std::string part = session.folder() + "/part.png";
        saveScreenshot(session.x(), all);
        QImage(QString::fromStdString(all)).copy(rect).save(QString::fromStdString(part));
        return part;
    }

    Session session;
    std::string folder;
    Program* program = nullptr;
};

void markPlace(const std::string& file, const QRect& rect) {
    std::string list = R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><array>)";
    for (const int number : {rect.x(), rect.y(), rect.width(), rect.height()}) {
        list += "<integer>" + std::to_string(number) + "</integer>";
    }
    list += "</array></plist>";
    setxattr(file.c_str(), "user.com.apple.metadata:kMDItemScreenCaptureGlobalRect", list.data(), list.size(), 0);
}

struct FlightCosts {
    std::vector<double> delay; // milliseconds from the last write to the flight's window, beyond the quiet time
    std::vector<double> cpu;   // milliseconds, from the write to the end of the flight
    int missed = 0;            // captures that hung without a flight
};

FlightCosts measureFlights(const Plan& plan, const QRect& rect, bool marked) {
    CaptureSession at(0);
    FlightCosts costs;
    EventLog log(at.session.display());
    for (int run = 0; run <= plan.flights; ++run) {
        const std::string part = at.picture(rect);
        if (marked) {
            markPlace(part, rect);
        }
        const double cpu = costsOf(at.program->pid()).cpuSeconds;
        const double begin = monotonicNow();
        fs::rename(part, at.folder + "/" + std::to_string(run) + ".png");
        const auto took = log.waitFor(
            [&](const SessionEvent& event) {
                return event.kind == SessionEventKind::Mapped && event.time > begin &&
                       event.window.height > lineHeight && event.window.instance == "rookbay-panel";
            },
            5);
        if (!took) {
            ++costs.missed; // the screen changed between the picture and the look at it, or is searched too often
            at.waitForQuiet();
            continue;
        }
        waitFor("the flight's end", at.session, [&at] {
            const auto panels = at.session.x().viewableOfClass("rookbay-panel");
            return std::none_of(panels.begin(), panels.end(),
                                [](const WindowFacts& panel) { return panel.height > lineHeight; });
        });
        if (run > 0) {
            costs.delay.push_back((took->time - begin - quietTime) * inMilliseconds);
            costs.cpu.push_back((costsOf(at.program->pid()).cpuSeconds - cpu) * inMilliseconds);
        }
        at.waitForQuiet();
    }
    return costs;
}

struct FolderCosts {
    double cpu = 0; // milliseconds a second while idle
    double wakeUps = 0;
    std::vector<double> newFile;       // milliseconds of the processor until the next quiet
    std::vector<double> newFileHidden; // milliseconds until the line comes down, beyond the quiet time
};

FolderCosts measureFolder(const Plan& plan, int files) {
    CaptureSession at(files);
    FolderCosts costs;
    pause(plan.settle);
    const ProcessCosts before = costsOf(at.program->pid());
    const double begin = monotonicNow();
    timespec idle{static_cast<time_t>(plan.idle), 0};
    nanosleep(&idle, nullptr);
    const ProcessCosts after = costsOf(at.program->pid());
    const double seconds = monotonicNow() - begin;
    costs.cpu = (after.cpuSeconds - before.cpuSeconds) * inMilliseconds / seconds;
    costs.wakeUps = static_cast<double>(after.wakeUps - before.wakeUps) / seconds;
    EventLog log(at.session.display());
    for (int run = 0; run <= plan.newFiles; ++run) {
        // No image, so that nothing follows but the look.
        const double cpu = costsOf(at.program->pid()).cpuSeconds;
        writeFile(at.folder + "/note-" + std::to_string(run) + ".txt", "x");
        pause(1.5);
        const double look = (costsOf(at.program->pid()).cpuSeconds - cpu) * inMilliseconds - 1.5 * costs.cpu;
        const double wrote = monotonicNow();
        writeFile(at.folder + "/new-" + std::to_string(run) + ".png", "no picture, so no flight");
        const auto shown = log.waitFor(
            [&](const SessionEvent& event) {
                return event.kind == SessionEventKind::Mapped && event.time > wrote &&
                       event.window.instance == "rookbay-panel";
            },
            20);
        if (run > 0 && shown) {
            costs.newFile.push_back(look);
            costs.newFileHidden.push_back((shown->time - wrote - quietTime) * inMilliseconds);
        }
        at.waitForQuiet();
    }
    return costs;
}

std::string number(double value) {
    return summary({value}, 2).substr(0, summary({value}, 2).find(' '));
}

void measureAll(const Plan& plan) {
    Table flights({"capture, screen 1920 × 1080", "last write to the flight's first frame (ms)",
                   "processor of arrival and flight (ms)", "without a flight"});
    const QRect part(300, 320, 640, 400);
    const QRect whole(0, 0, 1920, 1080);
    for (const auto& [name, rect, marked] : {std::tuple("640 × 400, place from the attribute", part, true),
                                             std::tuple("640 × 400, place from the pixels", part, false),
                                             std::tuple("whole screen, place from the pixels", whole, false)}) {
        const FlightCosts costs = measureFlights(plan, rect, marked);
        flights.addRow({name, summary(costs.delay, 1), summary(costs.cpu, 0), std::to_string(costs.missed)});
    }
    std::printf("%s\n", flights.text().c_str());
    Table folders({"folder watched", "processor while idle (ms per s)", "wake-ups (per s)",
                   "processor for one new file (ms)", "last write to the line (ms)"});
    for (const int files : {0, plan.files}) {
        const FolderCosts costs = measureFolder(plan, files);
        folders.addRow({std::to_string(files) + " files", number(costs.cpu), number(costs.wakeUps),
                        summary(costs.newFile, 1), summary(costs.newFileHidden, 1)});
    }
    std::printf("%s", folders.text().c_str());
}

} // namespace

} // namespace rb

int main(int argc, char** argv) {
    const rb::Plan quick{.flights = 3, .newFiles = 3, .files = 50'000, .settle = 3, .idle = 6};
    return rb::runBenchmark<rb::Plan>(argc, argv, "rookbay-capture-costs", {}, quick, rb::measureAll);
}
