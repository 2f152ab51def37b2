#include "helpers/linux/resolution/Trial.h"

#include "helpers/linux/resolution/Guardian.h"
#include "helpers/linux/resolution/Record.h"
#include "helpers/linux/resolution/Server.h"
#include "helpers/shared/Answer.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr std::chrono::seconds trialTime{20};
constexpr int success = 0;
constexpr int failure = 1;
constexpr std::size_t longestInput = 4096;
constexpr const char* notRestored = "未能完全恢复原显示模式；记录已保留，可运行 ResolutionHelper restore 再试。";

int fail(const std::string& message) {
    sayLine(Outcome(false).flag("trial", false).message(message).text());
    return failure;
}

enum class Decision { Keep, Restore };

// Waits for "keep": the end of the input, the end of the parent, a signal and the time all mean the opposite.
class Waiting {
public:
    Waiting()
        : parent_(static_cast<int>(::syscall(SYS_pidfd_open, ::getppid(), 0))) {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM}) {
            sigaddset(&signals, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        signals_ = ::signalfd(-1, &signals, SFD_CLOEXEC);
    }

    Decision decide(std::chrono::steady_clock::time_point deadline) {
        std::string input;
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) {
                return Decision::Restore;
            }
            // Negative descriptors are passed over.
            std::array<pollfd, 3> fds{{{STDIN_FILENO, POLLIN, 0}, {signals_, POLLIN, 0}, {parent_, POLLIN, 0}}};
            const int ready = ::poll(fds.data(), fds.size(), static_cast<int>(left.count()));
            if (ready < 0 && errno == EINTR) {
                continue;
            }
            if (ready <= 0 || fds[1].revents != 0 || fds[2].revents != 0) {
                return Decision::Restore;
            }
            std::array<char, longestInput> buffer{};
            const ssize_t length = ::read(STDIN_FILENO, buffer.data(), buffer.size());
            if (length < 0 && errno == EINTR) {
                continue;
            }
            if (length <= 0) {
                return Decision::Restore;
            }
            input.append(buffer.data(), static_cast<std::size_t>(length));
            if (("\n" + input).find("\nkeep\n") != std::string::npos) {
                return Decision::Keep;
            }
            // Only the line that is not finished yet can still become the word.
            input.erase(0, input.rfind('\n') == std::string::npos ? 0 : input.rfind('\n') + 1);
            if (input.size() > longestInput) {
                return Decision::Restore;
            }
        }
    }

private:
    int parent_;
    int signals_ = -1;
};

std::optional<std::uint32_t> numberIn(const std::string& text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

} // namespace

int runTrial(const std::string& identity, const std::string& modeID) {
    std::signal(SIGPIPE, SIG_IGN);
    const auto mode = numberIn(modeID);
    if (!mode) {
        return fail("模式编号无效。");
    }
    Waiting waiting;
    const auto folder = recordFolder();
    if (!folder) {
        return fail("没有可安全存放记录的文件夹，因此未更改显示模式。请检查 XDG_RUNTIME_DIR 和主文件夹。");
    }
    const std::string path = newRecordPath(*folder);
    // Before anything is connected, so that nothing is shared with it.
    const Guardian guardian(path);
    const Server server;
    if (!server.isThere()) {
        return fail("无法连接到图形显示，请检查环境变量 DISPLAY。");
    }
    const auto state = server.state();
    if (!state) {
        return fail("X 服务器不支持 RandR，无法更改显示模式。");
    }
    const RandrOutput* display = nullptr;
    for (const RandrOutput* candidate : state->activeOutputs()) {
        if (identityOf(*candidate) == identity) {
            display = candidate;
        }
    }
    if (!display) {
        return fail("找不到这块显示器；它可能已断开或被替换。");
    }
    const auto change = planChange(*state, display->id, *mode);
    if (!change) {
        return fail("显示器没有这个模式。");
    }
    const auto record = guardian.started() ? Record::create(path, recordText(writeArrangement(change->before)))
                                           : std::optional<Record>();
    if (!record) {
        return fail("无法记录原显示模式，因此未更改。");
    }
    const auto deadline = std::chrono::steady_clock::now() + trialTime;
    // What couldn't be taken back stays on record, for another attempt.
    const auto restore = [&] {
        const bool restored = server.apply(change->before);
        if (restored) {
            record->remove();
        }
        return restored;
    };
    if (!server.apply(change->after)) {
        return fail(restore() ? std::string("X 服务器拒绝了这个模式，已恢复原模式。")
                              : std::string("X 服务器拒绝了这个模式；") + notRestored);
    }
    // Without anybody who could confirm it there is no trial.
    const bool heard = sayLine(Outcome(true).flag("trial", true).text());
    if (heard && waiting.decide(deadline) == Decision::Keep) {
        const auto now = server.state();
        const RandrCrtc* crtc = now ? now->crtc(change->crtc) : nullptr;
        if (crtc && crtc->mode == *mode) {
            record->remove();
            forgetOldRecords(*folder);
            sayLine(Outcome(true).flag("kept", true).message("已保留新的显示模式。").text());
            return success;
        }
    }
    const bool restored = restore();
    sayLine(Outcome(restored).flag("kept", false).message(restored ? "已恢复原显示模式。" : notRestored).text());
    return restored ? success : failure;
}

int restoreFromRecords() {
    const auto folder = recordFolder();
    const RestoringAll all = folder ? restoreRecords(*folder) : RestoringAll{};
    const bool good = all.failed == 0 && (all.running == 0 || all.done > 0);
    sayLine(Outcome(good)
                .message(all.failed > 0    ? notRestored
                         : all.done > 0    ? "已恢复原显示模式。"
                         : all.running > 0 ? "显示模式正在试用中，未作更改；不确认就会自动恢复。"
                                           : "没有需要恢复的显示模式。")
                .text());
    return good ? success : failure;
}

} // namespace rb
