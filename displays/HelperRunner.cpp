#include "displays/HelperRunner.h"

#include "platform/ChildProcesses.h"
#include "platform/Hardware.h"
#include "platform/RunLoop.h"

#include <array>
#include <cstdio>
#include <random>
#include <utility>

namespace rb {

namespace {

constexpr double commandLimit = 5.0;   // seconds
constexpr double snapshotLimit = 12.0; // seconds
constexpr std::size_t mostOutput = std::size_t{8} * 1024 * 1024;

HelperAnswer failure(std::string message) {
    return {.ok = false, .message = std::move(message)};
}

ConnectionSnapshot snapshotFailure(std::string error) {
    return {.error = std::move(error)};
}

// A name that nobody can guess beforehand, in the form of a random UUID.
std::string snapshotName() {
    std::random_device random;
    std::array<unsigned, 4> words{};
    for (unsigned& word : words) {
        word = random();
    }
    words[1] = (words[1] & 0xFFFF0FFFU) | 0x4000U;
    words[2] = (words[2] & 0x3FFFFFFFU) | 0x80000000U;
    std::array<char, 37> text{};
    std::snprintf(text.data(), text.size(), "%08X-%04X-%04X-%04X-%04X%08X", words[0], words[1] >> 16U,
                  words[1] & 0xFFFFU, words[2] >> 16U, words[2] & 0xFFFFU, words[3]);
    return "rookbay-" + std::string(text.data()) + ".json";
}

} // namespace

// A helper under way.
struct HelperRunner::Run {
    std::unique_ptr<ChildProcess> child;
    std::string output;
    std::string outputFile;
    bool timedOut = false;
    Handle deadline;
    std::function<void(Run&)> finished;
};

HelperRunner::HelperRunner(const Desktop& desktop)
    : desktop_(desktop) {}

HelperRunner::~HelperRunner() {
    if (!running_) {
        return;
    }
    running_->deadline.reset(); // it may hold the run itself
    if (running_->child) {
        running_->child->kill();
    }
    if (!running_->outputFile.empty()) {
        desktop_.childProcesses.takeTemporaryFile(running_->outputFile, mostOutput);
    }
}

std::optional<std::string> HelperRunner::helperPath() const {
    return desktop_.childProcesses.resourcePath("DisplayHelper");
}

void HelperRunner::begin(const std::shared_ptr<Run>& run, std::string program,
                         const std::vector<std::string>& arguments, double limit) {
    running_ = run;
    const std::weak_ptr<Run> weak = run;
    ChildStart start{.program = std::move(program), .arguments = arguments, .outputFile = run->outputFile};
    if (run->outputFile.empty()) {
        start.output = [weak](std::string_view piece) {
            const auto self = weak.lock();
            // What is too long is no answer; its beginning is kept so that it isn't parsed as one.
            if (self && self->output.size() <= mostOutput) {
                self->output += piece;
            }
        };
    }
    start.ended = [this, weak] {
        if (const auto self = weak.lock()) {
            self->deadline.reset();
            running_.reset();
            self->finished(*self);
        }
    };
    run->child = desktop_.childProcesses.start(std::move(start));
    if (run->child) {
        run->deadline = desktop_.runLoop.after(limit, [weak] {
            if (const auto self = weak.lock()) {
                self->timedOut = true;
                self->child->kill(); // its end is told as any other
            }
        });
    }
}

void HelperRunner::run(const std::vector<std::string>& arguments, std::function<void(const HelperAnswer&)> answer) {
    auto current = std::make_shared<Run>();
    running_ = current;
    const auto refuse = [&](std::string message) {
        current->deadline = desktop_.runLoop.after(0, [this, current, answer, message = std::move(message)] {
            running_.reset();
            answer(failure(message));
        });
    };
    const auto path = helperPath();
    if (!path) {
        refuse("此版本的单屏硬件控制支持 Apple 芯片 Mac；Intel 仍可使用全部熄屏。");
        return;
    }
    current->finished = [answer](Run& run) {
        if (run.timedOut) {
            answer(failure("显示器响应超时，请检查连接。"));
            return;
        }
        const auto parsed = run.output.size() <= mostOutput ? parseHelperAnswer(run.output) : std::nullopt;
        answer(parsed ? *parsed : failure("控制模块未返回有效数据。"));
    };
    begin(current, *path, arguments, commandLimit);
    if (!current->child) {
        refuse("无法启动显示器控制模块。");
    }
}

void HelperRunner::readConnections(std::function<void(ConnectionSnapshot)> answer) {
    auto current = std::make_shared<Run>();
    running_ = current;
    const auto refuse = [&](std::string error) {
        current->deadline = desktop_.runLoop.after(0, [this, current, answer, error = std::move(error)] {
            running_.reset();
            answer(snapshotFailure(error));
        });
    };
    if (!desktop_.hardware.tellsOfConnections()) {
        refuse("线缆详情需要 Apple 芯片 Mac 和 macOS 14 或更新版本。");
        return;
    }
    const auto path = desktop_.childProcesses.resourcePath("CableHelper");
    if (!path) {
        refuse("连接诊断模块未安装。");
        return;
    }
    const auto file = desktop_.childProcesses.createTemporaryFile(snapshotName());
    if (!file) {
        refuse("无法创建连接快照。");
        return;
    }
    current->outputFile = *file;
    current->finished = [this, answer](Run& run) {
        const auto contents = desktop_.childProcesses.takeTemporaryFile(run.outputFile, mostOutput);
        run.outputFile.clear();
        if (run.timedOut) {
            answer(snapshotFailure("连接检测超时，请稍后刷新。"));
            return;
        }
        const auto snapshot = contents ? parseSnapshot(*contents) : std::nullopt;
        answer(snapshot ? *snapshot : snapshotFailure("连接信息暂时不可用。"));
    };
    begin(current, *path, {}, snapshotLimit);
    if (!current->child) {
        // As a helper that wrote nothing.
        current->deadline = desktop_.runLoop.after(0, [this, current] {
            running_.reset();
            current->finished(*current);
        });
    }
}

} // namespace rb
