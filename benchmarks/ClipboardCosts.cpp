// Measures the clipboard history beside other clipboard managers, each alone in a private desktop session with a tray
// and watched from outside: how soon it has what was copied, and what it costs.
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
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double inMilliseconds = 1000;
constexpr const char* text = "UTF8_STRING";
constexpr const char* png = "image/png";

struct Contestant {
    std::string name;
    std::vector<std::string> command;
    // Of its processes, as in /proc/PID/comm; services that it brings along and nobody else needs count as well.
    std::vector<std::string> processes;
    // What makes it keep pictures and 30 entries: files in the session's folder, and commands that are run in the
    // session before it starts.
    std::map<std::string, std::string> files = {};
    std::vector<std::vector<std::string>> settings = {};
    bool ours = false;
};

std::vector<std::string> gsettings(const std::string& schema, const std::string& key, const std::string& value) {
    return {"gsettings", "set", schema, key, value};
}

std::vector<std::string> clipman(const std::string& key, const std::string& type, const std::string& value) {
    return {"xfconf-query", "-c", "xfce4-panel", "-p", "/plugins/clipman/settings/" + key,
            "-n",           "-t", type,          "-s", value};
}

std::vector<Contestant> contestants() {
    const std::string ofGPaste = "org.gnome.GPaste";
    const std::string ofDiodon = "net.launchpad.Diodon.clipboard";
    return {
        {.name = "Rook Bay", .command = {ROOKBAY_PROGRAM}, .processes = {"rookbay"}, .ours = true},
        {.name = "CopyQ",
         .command = {"copyq"},
         .processes = {"copyq"},
         .files = {{"config/copyq/copyq.conf", "[Options]\nmaxitems=30\n"}}},
        {.name = "GPaste",
         .command = {"/usr/libexec/gpaste/gpaste-daemon"},
         .processes = {"gpaste-daemon"},
         .settings = {gsettings(ofGPaste, "images-support", "true"), gsettings(ofGPaste, "max-history-size", "30"),
                      gsettings(ofGPaste, "max-memory-usage", "1000")}},
        {.name = "xfce4-clipman",
         .command = {"xfce4-clipman"},
         .processes = {"xfce4-clipman"},
         // It keeps no more pictures than five.
         .settings = {clipman("max-texts-in-history", "int", "30"), clipman("max-images-in-history", "int", "5")}},
        {.name = "Klipper",
         .command = {"klipper"},
         .processes = {"klipper"},
         .files = {{"config/klipperrc",
                    "[General]\nMaxClipItems=30\nIgnoreImages=false\nKeepClipboardContents=true\n"}}},
        {.name = "Diodon",
         .command = {"diodon"},
         .processes = {"diodon", "zeitgeist-daemo", "zeitgeist-fts"},
         .settings = {gsettings(ofDiodon, "add-images", "true"), gsettings(ofDiodon, "recent-items-size", "30")}},
        {.name = "Parcellite",
         .command = {"parcellite"},
         .processes = {"parcellite"},
         .files = {{"config/parcellite/parcelliterc", "[rc]\nuse_copy=true\nsave_history=true\nhistory_limit=30\n"}}},
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
    std::vector<double> textTaken;            // milliseconds
    std::vector<double> pictureTaken;         // milliseconds
    std::vector<double> textCpu;              // milliseconds
    std::vector<double> textCpuAmongPictures; // milliseconds
    std::vector<double> pictureCpu;           // milliseconds
    std::vector<double> entries;              // kept
    std::vector<double> pictures;             // kept
    std::vector<double> memory;               // MiB
    std::vector<double> idleCpu;              // milliseconds a second
    std::vector<double> wakeUps;              // a second
    std::vector<double> start;                // milliseconds
    std::vector<double> stall;                // milliseconds
};

class Contest {
public:
    explicit Contest(Contestant contestant)
        : contestant_(std::move(contestant))
        , owner_(session_.display())
        , tray_(session_.display()) {
        for (const auto& [name, contents] : contestant_.files) {
            const fs::path path = fs::path(session_.folder()) / name;
            fs::create_directories(path.parent_path());
            writeFile(path, contents);
        }
        for (const auto& setting : contestant_.settings) {
            Program& program = session_.start(setting);
            if (program.waitForExit() != 0) {
                throw std::runtime_error(contestant_.name + ": " + setting.front() + ": " + program.output());
            }
        }
        program_ = &session_.start(contestant_.command);
        pass(4);
        if (processes().empty()) {
            throw std::runtime_error(contestant_.name + " doesn't run: " + program_->output());
        }
    }

    Results results() {
        Results results;
        for (int round = 0; round < 9; ++round) {
            time({{text, "a line of text, number " + std::to_string(round)}}, results.textTaken);
        }
        for (char letter : {'a', 'b', 'c'}) {
            costs({{text, longText(letter)}}, results.textCpu);
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
        // Who writes the whole history anew at each copy has pictures to write now.
        for (char letter : {'d', 'e', 'f'}) {
            costs({{text, longText(letter)}}, results.textCpuAmongPictures);
        }
        restart(results);
        count(results);
        if (contestant_.ours) {
            stall(results);
        }
        return results;
    }

private:
    static std::string longText(char letter) {
        std::string lines(200'000, letter);
        constexpr std::size_t lineLength = 60;
        for (std::size_t place = lineLength; place < lines.size(); place += lineLength) {
            lines[place] = '\n';
        }
        return lines;
    }
    // Lets time pass while tray and clipboard are served.
    void pass(double seconds) {
        const double end = monotonicNow() + seconds;
        while (monotonicNow() < end) {
            tray_.icons();
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
    // The pictures in the middle: the texts that come afterwards push out none of them.
    void fillHistory() {
        constexpr std::uint32_t texts = 22;
        constexpr std::uint32_t pictures = 8;
        for (std::uint32_t number = 0; number < texts; ++number) {
            if (number == texts / 2) {
                for (std::uint32_t side = 0; side < pictures; ++side) {
                    copy({{png, picture(sideOf2MiB, 300 + side)}});
                    pass(0.7);
                }
            }
            copy({{text, "entry " + std::to_string(number) + std::string(200, 'x')}});
            pass(0.7);
        }
        pass(6);
    }
    // What it still has after it was started anew. Served meanwhile, since it may ask for the clipboard.
    void count(Results& results) {
        Program& counter = session_.start({CLIPBOARD_KEPT, contestant_.name});
        for (int moment = 0; moment < 100 && counter.isRunning(); ++moment) {
            pass(0.1);
        }
        int entries = 0;
        int pictures = 0;
        if (std::istringstream(counter.output()) >> entries >> pictures) {
            results.entries.push_back(entries);
            results.pictures.push_back(pictures);
        } else {
            std::fprintf(stderr, "%s\n", counter.output().c_str());
        }
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
            // Some write their history only now.
            for (const pid_t pid : processes()) {
                ::kill(pid, SIGTERM);
            }
            const double end = monotonicNow() + 20;
            while (!processes().empty() && monotonicNow() < end) {
                (void)program_->exitCode();
                pass(0.1);
            }
            pass(1);
            const double start = monotonicNow();
            program_ = &session_.start(contestant_.command);
            // Copied again and again, until it listens.
            bool taken = false;
            for (int number = 0; !taken && monotonicNow() < start + 10; ++number) {
                owner_.copy({{text, "copied at the start " + std::to_string(round) + "." + std::to_string(number)}});
                constexpr double look = 0.004;
                taken = owner_.serveUntilTaken(look) || owner_.serveUntilTaken(number % 50 == 49 ? 0.6 : 0);
                if (number % 8 == 0) {
                    tray_.icons();
                }
            }
            if (taken) {
                results.start.push_back((*owner_.takenAt() - start) * inMilliseconds);
            }
            pass(2.5);
        }
    }
    // The longest that a copied text waits to be taken while 180 MiB are encoded and written: how long the main thread
    // was busy or kept from running at most. Others write less, at other times, or slow down on purpose when much is
    // copied.
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
        for (const std::string& name : contestant_.processes) {
            for (const pid_t pid : session_.processes(name)) {
                found.insert(pid);
            }
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
    TrayManager tray_;
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
    {"the same with 8 pictures of 2 MiB in the history (ms)", "14", &Results::textCpuAmongPictures, 1},
    {"6 MiB PNG, processor (ms)", "55", &Results::pictureCpu, 1},
    {"30 entries, 8 of them 2 MiB PNG, proportional share (MiB)", "28", &Results::memory, 1},
    {"with these, processor while idle (ms per s)", "", &Results::idleCpu, 3},
    {"with these, wake-ups while idle (per s)", "", &Results::wakeUps, 2},
    {"with these, exec to the first copy taken (ms)", "", &Results::start, 0},
    {"entries that it has then", "30", &Results::entries, 0},
    {"pictures among them", "8", &Results::pictures, 0},
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
        try {
            columns.push_back(Contest(contestant).results());
            head.push_back(contestant.name);
        } catch (const std::runtime_error& problem) {
            std::fprintf(stderr, "left out: %s\n", problem.what()); // it isn't installed here
        }
    }
    Table table(head);
    for (const Row& row : rows) {
        std::vector<std::string> cells{row.title, row.aim};
        for (const Results& results : columns) {
            const auto& values = results.*row.values;
            cells.push_back(values.empty() ? "—" : summary(values, row.decimals));
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
