#include "desktops/macos/ChildProcesses.h"

#include "desktops/macos/Bridge.h"

#import <Foundation/Foundation.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

// What the blocks of a running program share with its owner. Main thread only.
struct ChildState {
    ChildStart start;
    bool outputOpen = false;
    bool running = true;

    void tellEnd() {
        if (!running && !outputOpen && start.ended) {
            const auto ended = std::exchange(start.ended, nullptr); // it may drop the process
            ended();
        }
    }
};

class MacChild final : public ChildProcess {
public:
    MacChild(NSTask* task, NSFileHandle* input, NSFileHandle* output, std::shared_ptr<ChildState> state)
        : task_(task)
        , input_(input)
        , output_(output)
        , state_(std::move(state)) {}
    ~MacChild() override {
        closeInput();
        output_.readabilityHandler = nil;
        state_->start.output = nullptr;
        state_->start.ended = nullptr;
    }
    MacChild(const MacChild&) = delete;
    MacChild& operator=(const MacChild&) = delete;

    bool isRunning() const override { return task_.running != NO; }
    void write(std::string_view text) override {
        if (input_ != nil) {
            NSData* data = [NSData dataWithBytes:text.data() length:text.size()];
            [input_ writeData:data error:nil]; // a reader that is gone is no error
        }
    }
    void closeInput() override {
        [input_ closeAndReturnError:nil];
        input_ = nil;
    }
    void kill() override {
        if (isRunning()) {
            ::kill(task_.processIdentifier, SIGKILL);
        }
    }

private:
    NSTask* task_;
    NSFileHandle* input_;
    NSFileHandle* output_;
    std::shared_ptr<ChildState> state_;
};

} // namespace

std::optional<std::string> MacChildProcesses::resourcePath(const std::string& name) const {
#if !defined(__arm64__)
    // The control channels of single displays exist on Apple silicon alone.
    if (name == "DisplayHelper") {
        return std::nullopt;
    }
#endif
    NSString* path = [NSBundle.mainBundle pathForResource:nsString(name) ofType:nil];
    return path != nil ? std::optional(utf8String(path)) : std::nullopt;
}

std::unique_ptr<ChildProcess> MacChildProcesses::start(ChildStart start) {
    const auto state = std::make_shared<ChildState>();
    NSTask* task = [[NSTask alloc] init];
    task.executableURL = [NSURL fileURLWithPath:nsString(start.program)];
    NSMutableArray<NSString*>* arguments = [NSMutableArray array];
    for (const std::string& argument : start.arguments) {
        [arguments addObject:nsString(argument)];
    }
    task.arguments = arguments;
    task.standardError = NSFileHandle.fileHandleWithNullDevice;
    task.standardInput = NSFileHandle.fileHandleWithNullDevice;
    NSFileHandle* input = nil;
    NSFileHandle* output = nil;
    if (start.pipesInput) {
        NSPipe* pipe = [NSPipe pipe];
        task.standardInput = pipe;
        input = pipe.fileHandleForWriting;
        fcntl(input.fileDescriptor, F_SETNOSIGPIPE, 1);
    }
    if (start.outputFile.empty()) {
        NSPipe* pipe = [NSPipe pipe];
        task.standardOutput = pipe;
        output = pipe.fileHandleForReading;
        state->outputOpen = true;
        output.readabilityHandler = ^(NSFileHandle* handle) {
            NSData* data = handle.availableData;
            if (data.length == 0) {
                handle.readabilityHandler = nil;
            }
            dispatch_async(dispatch_get_main_queue(), ^{
                if (data.length == 0) {
                    state->outputOpen = false;
                    state->tellEnd();
                } else if (const auto told = state->start.output) {
                    told({static_cast<const char*>(data.bytes), data.length});
                }
            });
        };
    } else {
        NSFileHandle* file = [NSFileHandle fileHandleForWritingAtPath:nsString(start.outputFile)];
        if (file == nil) {
            return nullptr;
        }
        task.standardOutput = file;
    }
    task.terminationHandler = ^(NSTask*) {
        dispatch_async(dispatch_get_main_queue(), ^{
            state->running = false;
            state->tellEnd();
        });
    };
    state->start = std::move(start);
    if ([task launchAndReturnError:nil] == NO) {
        output.readabilityHandler = nil;
        return nullptr;
    }
    return std::make_unique<MacChild>(task, input, output, state);
}

std::optional<std::string> MacChildProcesses::createTemporaryFile(const std::string& name) {
    std::string path = utf8String([NSTemporaryDirectory() stringByAppendingPathComponent:nsString(name)]);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        return std::nullopt;
    }
    close(file);
    return path;
}

std::optional<std::string> MacChildProcesses::takeTemporaryFile(const std::string& path, std::size_t limit) {
    NSData* data = [NSData dataWithContentsOfFile:nsString(path)];
    unlink(path.c_str());
    if (data == nil || data.length > limit) {
        return std::nullopt;
    }
    return std::string(static_cast<const char*>(data.bytes), data.length);
}

} // namespace rb
