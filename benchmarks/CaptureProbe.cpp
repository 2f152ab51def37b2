#include "benchmarks/Table.h"
#include "tests/session/frame/EventLog.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// How long the user waits for rookbay-capture, on a private display. Prints the rows of docs/performance.md.
// usage: rookbay-capture-probe [RUNS]

namespace {

constexpr double milliseconds = 1000;

// From the start of the process to the window that shows the frozen screen, and to its dimmed look.
void measureChooser(rb::Session& session, std::vector<double>& frozen, std::vector<double>& dimmed) {
    rb::XClient& x = session.x();
    rb::EventLog log(session.display());
    const std::uint32_t before = x.pixel(5, 5);
    const double begin = rb::monotonicNow();
    rb::Program& program = session.start({CAPTURE_PROGRAM, "--region"});
    const auto shown = log.waitFor([](const rb::SessionEvent& event) {
        return event.kind == rb::SessionEventKind::Mapped && event.window.instance == "rookbay-capture";
    });
    if (shown) {
        frozen.push_back((shown->time - begin) * milliseconds);
    }
    if (rb::waitUntil([&] { return x.pixel(5, 5) != before; })) {
        dimmed.push_back((rb::monotonicNow() - begin) * milliseconds);
    }
    program.end();
    (void)rb::waitUntil([&] { return x.pixel(5, 5) == before; });
}

// From the start of the process to the complete file.
double measureFile(rb::Session& session, const std::string& folder) {
    const double begin = rb::monotonicNow();
    rb::Program& program = session.start({CAPTURE_PROGRAM, "--output", folder});
    (void)rb::waitUntil([&] { return !std::filesystem::is_empty(folder); });
    const double end = rb::monotonicNow();
    (void)program.waitForExit();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::filesystem::remove(entry.path());
    }
    return (end - begin) * milliseconds;
}

} // namespace

int main(int count, char** words) {
    const int runs = count > 1 ? std::atoi(words[1]) : 10;
    rb::Table table({"", "1920 × 1080", "3840 × 2160"});
    std::vector<std::string> frozenRow{"exec to the frozen screen (ms)"};
    std::vector<std::string> dimmedRow{"exec to the chooser, ready for the mouse (ms)"};
    std::vector<std::string> fileRow{"exec to the complete file of a display (ms)"};
    for (const auto& [width, height] : {std::pair(1920, 1080), std::pair(3840, 2160)}) {
        rb::Session session({.width = width, .height = height});
        const std::string folder = session.folder() + "/shots";
        std::filesystem::create_directory(folder);
        rb::writeFile(session.configFolder() + "/rook-bay/screencapture.json", R"({"show-thumbnail": false})");
        if (session.start({"hsetroot", "-add", "#336699", "-add", "#cc9966", "-gradient", "20"}).waitForExit() != 0) {
            std::fputs("hsetroot failed\n", stderr);
            return 1;
        }
        std::vector<double> frozen;
        std::vector<double> dimmed;
        std::vector<double> file;
        for (int run = 0; run < runs; ++run) {
            measureChooser(session, frozen, dimmed);
            file.push_back(measureFile(session, folder));
        }
        frozenRow.push_back(rb::summary(frozen, 0));
        dimmedRow.push_back(rb::summary(dimmed, 0));
        fileRow.push_back(rb::summary(file, 0));
    }
    for (const auto& row : {frozenRow, dimmedRow, fileRow}) {
        table.addRow(row);
    }
    std::printf("%s", table.text().c_str());
}
