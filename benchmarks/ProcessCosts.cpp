#include "benchmarks/ProcessCosts.h"

#include "tests/session/frame/Program.h"

#include <filesystem>
#include <sstream>
#include <string>

namespace rb {

namespace {

// The number behind a label of a /proc file.
double numberBehind(const std::string& text, const std::string& label) {
    const auto place = text.find(label);
    return place == std::string::npos ? 0 : std::stod(text.substr(place + label.size()));
}

} // namespace

ProcessCosts costsOf(pid_t pid) {
    ProcessCosts costs;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        // The first number is the time on the processor in nanoseconds.
        double nanoseconds = 0;
        std::istringstream(readFile(thread.path() / "schedstat").value_or("0")) >> nanoseconds;
        costs.cpuSeconds += nanoseconds / 1e9;
        const std::string status = readFile(thread.path() / "status").value_or("");
        costs.wakeUps += static_cast<std::uint64_t>(numberBehind(status, "\nvoluntary_ctxt_switches:"));
    }
    return costs;
}

ProcessMemory memoryOf(pid_t pid) {
    const std::string rollup = readFile("/proc/" + std::to_string(pid) + "/smaps_rollup").value_or("");
    constexpr double kibPerMib = 1024;
    return {.proportional = numberBehind(rollup, "\nPss:") / kibPerMib,
            .unshared =
                (numberBehind(rollup, "\nPrivate_Clean:") + numberBehind(rollup, "\nPrivate_Dirty:")) / kibPerMib};
}

} // namespace rb
