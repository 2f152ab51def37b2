#include "desktops/linux/ProgramTakeover.h"
#include "fuzz/Require.h"
#include "platform/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>
#include <utility>

namespace {

const std::string ours = "/home/\xe6\x88\x91/Screenshots";

struct Silence final : rb::Log {
    void write(const std::string&) override {}
};

// A program whose settings are in memory.
class Remembering final : public rb::ScreenshotProgram {
public:
    explicit Remembering(State& state)
        : state_(state) {}
    std::string name() const override { return "flameshot"; }
    bool isInstalled() const override { return true; }
    Reading read() const override { return {.readable = true, .state = state_}; }
    bool write(const State& state) override {
        state_ = state;
        return true;
    }
    State redirected(const State&, const std::string& folder) const override { return folder; }
    State undone(const State& current, const State& before, const State& after) const override {
        return current == after ? before : current;
    }

private:
    State& state_;
};

std::string scratch() {
    const char* memory = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    std::string pattern = std::string(memory) + "/takeover-fuzz-XXXXXX";
    return mkdtemp(pattern.data());
}

} // namespace

// Settings of screenshot programs of any bytes: taking over twice is taking over once, and giving back leaves every
// byte as it was. A journal of any bytes: reading it ends, and what it doesn't hold is not given.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text{reinterpret_cast<const char*>(data), size};
    for (const auto& program : rb::knownScreenshotPrograms()) {
        const auto after = program->redirected(text, ours);
        ROOKBAY_REQUIRE(program->redirected(after, ours) == after);
        ROOKBAY_REQUIRE(program->undone(after, text, after) == text);
        // What somebody wrote meanwhile may be anything; undoing it twice is undoing it once.
        const auto undone = program->undone(text, std::nullopt, after);
        ROOKBAY_REQUIRE(program->undone(undone, std::nullopt, after) == undone);
    }

    static const std::string journal = scratch() + "/journal.json";
    std::ofstream(journal, std::ios::binary) << text;
    rb::ScreenshotProgram::State state = "theirs";
    Silence log;
    std::vector<std::unique_ptr<rb::ScreenshotProgram>> programs;
    programs.push_back(std::make_unique<Remembering>(state));
    rb::ProgramTakeover takeover(std::move(programs), journal, log);
    takeover.restore();
    const auto given = state;
    takeover.restore();
    ROOKBAY_REQUIRE(state == given);
    return 0;
}
