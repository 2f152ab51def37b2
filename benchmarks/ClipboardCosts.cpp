// Measures the clipboard history beside other clipboard managers, each alone in a private desktop session and watched
// from outside: how soon it has what was copied, and what it costs.
// usage: rookbay-clipboard-costs [PROGRAM]...    names as in the table's head; all of them without any

#include "benchmarks/ClipboardOwner.h"
#include "benchmarks/ProcessCosts.h"
#include "benchmarks/Table.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/TrayManager.h"
#include "tests/session/frame/Wait.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <set>
#include <stdexcept>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double inMilliseconds = 1000;
constexpr const char* text = "UTF8_STRING";
constexpr const char* png = "image/png";

struct Contestant {
    std::string name;
    std::vector<std::string> command;
    // What makes it keep pictures and 30 entries; run in the session before it starts.
    std::vector<std::vector<std::string>> settings = {};
    bool ours = false;
};

std::vector<Contestant> contestants() {
    const auto clipman = [](const std::string& key) {
        return std::vector<std::string>{"xfconf-query", "-c", "xfce4-panel", "-p", "/plugins/clipman/settings/" + key,
                                        "-n",           "-t", "int",         "-s", "30"};
    };
    return {
        {.name = "Rook Bay", .command = {ROOKBAY_PROGRAM}, .ours = true},
        {.name = "CopyQ", .command = {"copyq"}},
        {.name = "GPaste",
         .command = {"/usr/libexec/gpaste/gpaste-daemon"},
         .settings = {{"gsettings", "set", "org.gnome.GPaste", "images-support", "true"}}},
        {.name = "xfce4-clipman",
         .command = {"xfce4-clipman"},
         .settings = {clipman("max-texts-in-history"), clipman("max-images-in-history")}},
        {.name = "Diodon",
         .command = {"diodon"},
         .settings = {{"gsettings", "set", "net.launchpad.Diodon.clipboard", "add-images", "true"}}},
        {.name = "Parcellite", .command = {"parcellite"}},
    };
}

// Of three bytes a pixel, since there is nothing in it to compress.
std::string picture(int side, std::uint32_t seed) {
    QImage image(side, side, QImage::Format_RGB888);
    std::uint32_t state = seed;
    for (int y = 0; y < side; ++y) {
        for (int column = 0; column < side; ++column) {
            state = state * 1664525U + 1013904223U;
            image.setPixel(column, y, state >> 8U);
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", 90);
    return bytes.toStdString();
}
constexpr int sideOf2MiB = 836;
constexpr int sideOf6MiB = 1440;

struct Results {
    std::vector<double> textTaken;    // milliseconds
    std::vector<double> pictureTaken; // milliseconds
    std::vector<double> textCpu;      // milliseconds
    std::vector<double> pictureCpu;   // milliseconds
    std::vector<double> memory;       // MiB
    std::vector<double> idleCpu;      // milliseconds a second
    std::vector<double> wakeUps;      // a second
    std::vector<double> start;        // milliseconds
    std::vector<double> stall;        // milliseconds
};

class Contest {
public:
    explicit Contest(Contestant contestant)
        : contestant_(std::move(contestant))
        , owner_(session_.display()) {
        for (const auto& setting : contestant_.settings) {
            session_.start(setting).waitForExit();
        }
        if (!contestant_.ours) {
            tray_ = std::make_unique<TrayManager>(session_.display());
        }
        program_ = &session_.start(contestant_.command);
        pass(4);
    }

    Results results() {
        Results results;
        for (int round = 0; round < 9; ++round) {
            time({{text, "a line of text, number " + std::to_string(round)}}, results.textTaken);
        }
        // Texts first: who writes the whole history anew at each copy then has no pictures to write.
        for (char letter : {'a', 'b'}) {
            std::string lines(200'000, letter);
            constexpr std::size_t lineLength = 60;
            for (std::size_t place = lineLength; place < lines.size(); place += lineLength) {
                lines[place] = '\n';
            }
            costs({{text, lines}}, results.textCpu);
        }
        for (std::uint32_t round = 0; round < 2; ++round) {
            costs({{png, picture(sideOf6MiB, 200 + round)}}, results.pictureCpu);
        }
        for (std::uint32_t round = 0; round < 5; ++round) {
            time({{png, picture(sideOf2MiB, 100 + round)}}, results.pictureTaken);
        }
        fillHistory();
        results.memory.push_back(memory());
        rest(results);
        restart(results);
        if (contestant_.ours) {
            stall(results);
        }
        return results;
    }

private:
    // Lets time pass while tray and clipboard are served.
    void pass(double seconds) {
        const double end = monotonicNow() + seconds;
        while (monotonicNow() < end) {
            if (tray_) {
                tray_->icons();
            }
            owner_.serve(std::min(0.1, std::max(0.0, end - monotonicNow())));
        }
    }
    bool copy(const std::map<std::string, std::string>& contents) {
        owner_.copy(contents);
        return owner_.serveUntilTaken(3);
    }
    void time(const std::map<std::string, std::string>& contents, std::vector<double>& times) {
        if (copy(contents)) {
            times.push_back((*owner_.takenAt() - owner_.copiedAt()) * inMilliseconds);
        }
        pass(0.7); // also those that look only twice a second are done then
    }
    // Processor time from the copy until everything that it caused is done, the archive included.
    void costs(const std::map<std::string, std::string>& contents, std::vector<double>& cpu) {
        pass(2);
        const double before = cpuSeconds();
        const bool taken = copy(contents);
        pass(3);
        if (taken) {
            cpu.push_back((cpuSeconds() - before) * inMilliseconds);
        }
    }
    void fillHistory() {
        constexpr std::uint32_t texts = 22;
        constexpr std::uint32_t pictures = 8;
        for (std::uint32_t number = 0; number < pictures; ++number) {
            copy({{png, picture(sideOf2MiB, 300 + number)}});
            pass(0.7);
        }
        for (std::uint32_t number = 0; number < texts; ++number) {
            copy({{text, "entry " + std::to_string(number) + std::string(200, 'x')}});
            pass(0.3);
        }
        pass(6);
    }
    void rest(Results& results) {
        const ProcessCosts before = costsOfAll();
        const double cpuBefore = cpuSeconds();
        const double begin = monotonicNow();
        timespec pause{10, 0};
        nanosleep(&pause, nullptr);
        const double seconds = monotonicNow() - begin;
        results.idleCpu.push_back((cpuSeconds() - cpuBefore) * inMilliseconds / seconds);
        results.wakeUps.push_back(static_cast<double>(costsOfAll().wakeUps - before.wakeUps) / seconds);
    }
    // From before the fork until a copy is taken.
    void restart(Results& results) {
        for (std::uint32_t round = 0; round < 3; ++round) {
            program_->end();
            for (const pid_t pid : processes()) {
                ::kill(pid, SIGTERM);
            }
            pass(1.5);
            const double start = monotonicNow();
            program_ = &session_.start(contestant_.command);
            // Copied again and again, until it listens.
            bool taken = false;
            for (int number = 0; !taken && monotonicNow() < start + 10; ++number) {
                owner_.copy({{text, "copied at the start " + std::to_string(round) + "." + std::to_string(number)}});
                constexpr double look = 0.004;
                taken = owner_.serveUntilTaken(look) || owner_.serveUntilTaken(number % 50 == 49 ? 0.6 : 0);
                if (tray_ && number % 8 == 0) {
                    tray_->icons();
                }
            }
            if (taken) {
                results.start.push_back((*owner_.takenAt() - start) * inMilliseconds);
            }
            pass(2.5);
        }
    }
    // The longest that a copied text waits to be taken while 180 MiB are encoded and written: how long the main thread
    // was busy or kept from running at most.
    void stall(Results& results) {
        constexpr std::uint32_t entries = 30;
        for (std::uint32_t number = 0; number < entries; ++number) {
            copy({{png, picture(sideOf6MiB, 400 + number)}});
        }
        const fs::path archive = session_.environment.at("XDG_DATA_HOME") + "/rook-bay/Clipboard.archive";
        const auto written = [&] { return fs::last_write_time(archive); };
        pass(6);
        const auto before = written();
        double longest = 0;
        const double end = monotonicNow() + 15;
        while (monotonicNow() < end && written() == before) {
            // Always the same, so that it is one entry.
            copy({{text, "meanwhile"}});
            longest = std::max(longest, owner_.takenAt().value_or(end) - owner_.copiedAt());
            owner_.serve(0.002);
        }
        if (written() != before && fs::file_size(archive) > 170'000'000) {
            results.stall.push_back(longest * inMilliseconds);
        }
    }

    // The program's and those that it started; some work in several processes.
    std::set<pid_t> processes() const {
        std::set<pid_t> found;
        const std::string name = fs::path(contestant_.command.front()).filename().string().substr(0, 15);
        for (const pid_t pid : session_.processes(name)) {
            found.insert(pid);
        }
        if (program_->isRunning()) {
            found.insert(program_->pid());
        }
        return found;
    }
    double memory() const {
        double sum = 0;
        for (const pid_t pid : processes()) {
            sum += memoryOf(pid).proportional;
        }
        return sum;
    }
    ProcessCosts costsOfAll() const {
        ProcessCosts sum;
        for (const pid_t pid : processes()) {
            sum.wakeUps += costsOf(pid).wakeUps;
        }
        return sum;
    }
    // Also of threads that have ended.
    double cpuSeconds() const {
        double sum = 0;
        for (const pid_t pid : processes()) {
            clockid_t clock{};
            timespec time{};
            if (clock_getcpuclockid(pid, &clock) == 0 && clock_gettime(clock, &time) == 0) {
                sum += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
            }
        }
        return sum;
    }

    Contestant contestant_;
    Session session_;
    ClipboardOwner owner_;
    std::unique_ptr<TrayManager> tray_;
    Program* program_ = nullptr;
};

struct Row {
    const char* title;
    const char* aim;
    std::vector<double> Results::*values;
    int decimals;
};

constexpr Row rows[] = {
    {"text, copy to taken (ms)", "3.4", &Results::textTaken, 2},
    {"2 MiB PNG, copy to taken (ms)", "21", &Results::pictureTaken, 1},
    {"200,000 characters, processor (ms)", "14", &Results::textCpu, 1},
    {"6 MiB PNG, processor (ms)", "55", &Results::pictureCpu, 1},
    {"30 entries, 8 of them 2 MiB PNG, proportional share (MiB)", "28", &Results::memory, 1},
    {"with these, processor while idle (ms per s)", "", &Results::idleCpu, 3},
    {"with these, wake-ups while idle (per s)", "", &Results::wakeUps, 2},
    {"with these, exec to the first copy taken (ms)", "", &Results::start, 0},
    {"text, copy to taken while 180 MiB are written, longest (ms)", "4", &Results::stall, 2},
};

void measure(const std::vector<std::string>& wanted) {
    std::vector<std::string> head{"", "aim"};
    std::vector<Results> columns;
    for (const Contestant& contestant : contestants()) {
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), contestant.name) == wanted.end()) {
            continue;
        }
        std::fprintf(stderr, "%s\n", contestant.name.c_str());
        head.push_back(contestant.name);
        columns.push_back(Contest(contestant).results());
    }
    Table table(head);
    for (const Row& row : rows) {
        std::vector<std::string> cells{row.title, row.aim};
        for (const Results& results : columns) {
            const auto& values = results.*row.values;
            cells.push_back(values.empty() ? "" : summary(values, row.decimals));
        }
        table.addRow(cells);
    }
    std::printf("%s", table.text().c_str());
}

} // namespace

} // namespace rb

int main(int argc, char** argv) {
    try {
        rb::measure({argv + 1, argv + argc});
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
