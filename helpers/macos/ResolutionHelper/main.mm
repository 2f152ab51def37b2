#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <signal.h>
#include <string>
#include <unistd.h>

// Tries a display mode: "trial IDENTITY MODE". The mode is set for this process alone, so the window server takes it
// back by itself however the process ends; only "keep" on standard input sets it for good.
namespace {

constexpr std::chrono::seconds trialTime{20};
constexpr const char* help = "用法：ResolutionHelper trial 显示器标识 模式编号\n\n"
                             "试用一个显示模式，直到标准输入中出现一行 keep；否则在输入结束或 20 秒后恢复原模式。\n";

void say(NSDictionary* answer) {
    NSData* data = [NSJSONSerialization dataWithJSONObject:answer options:0 error:nil];
    std::fwrite(data.bytes, 1, data.length, stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

int fail(NSString* message) {
    say(@{@"ok" : @NO, @"trial" : @NO, @"message" : message});
    return 1;
}

// The display of that identity, or 0.
CGDirectDisplayID displayNamed(const std::string& identity) {
    const auto display = static_cast<CGDirectDisplayID>(std::strtoul(identity.c_str(), nullptr, 10));
    const std::string now = std::to_string(display) + ":" + std::to_string(CGDisplayVendorNumber(display)) + ":" +
                            std::to_string(CGDisplayModelNumber(display)) + ":" +
                            std::to_string(CGDisplaySerialNumber(display));
    return now == identity ? display : 0;
}

// To be released; null when the display has no such mode.
CGDisplayModeRef copyMode(CGDirectDisplayID display, int modeID) {
    NSDictionary* options = @{(__bridge NSString*)kCGDisplayShowDuplicateLowResolutionModes : @YES};
    CFArrayRef list = CGDisplayCopyAllDisplayModes(display, (__bridge CFDictionaryRef)options);
    CGDisplayModeRef found = nullptr;
    for (CFIndex index = 0; list != nullptr && found == nullptr && index < CFArrayGetCount(list); ++index) {
        auto* mode = static_cast<CGDisplayModeRef>(const_cast<void*>(CFArrayGetValueAtIndex(list, index)));
        if (CGDisplayModeGetIODisplayModeID(mode) == modeID && CGDisplayModeIsUsableForDesktopGUI(mode)) {
            found = CGDisplayModeRetain(mode);
        }
    }
    if (list != nullptr) {
        CFRelease(list);
    }
    return found;
}

bool setMode(CGDirectDisplayID display, CGDisplayModeRef mode, CGConfigureOption option) {
    CGDisplayConfigRef configuration = nullptr;
    if (CGBeginDisplayConfiguration(&configuration) != kCGErrorSuccess) {
        return false;
    }
    if (CGConfigureDisplayWithDisplayMode(configuration, display, mode, nullptr) != kCGErrorSuccess) {
        CGCancelDisplayConfiguration(configuration);
        return false;
    }
    return CGCompleteDisplayConfiguration(configuration, option) == kCGErrorSuccess;
}

// Whether the line came before the end of the input and of the time.
bool waitForKeep(std::chrono::steady_clock::time_point deadline) {
    std::string input;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        const int ready = left.count() > 0 ? poll(&waiting, 1, static_cast<int>(left.count())) : 0;
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        std::array<char, 512> buffer{};
        const ssize_t length = ready > 0 ? read(STDIN_FILENO, buffer.data(), buffer.size()) : 0;
        if (length <= 0) {
            return false;
        }
        input.append(buffer.data(), static_cast<std::size_t>(length));
        if (("\n" + input).find("\nkeep\n") != std::string::npos) {
            return true;
        }
        const std::size_t line = input.rfind('\n');
        input.erase(0, line == std::string::npos ? 0 : line + 1);
        if (input.size() > 4096) {
            return false;
        }
    }
}

int runTrial(const std::string& identity, const std::string& modeID) {
    const CGDirectDisplayID display = displayNamed(identity);
    if (display == 0) {
        return fail(@"找不到这块显示器；它可能已断开或被替换。");
    }
    CGDisplayModeRef before = CGDisplayCopyDisplayMode(display);
    CGDisplayModeRef wanted = copyMode(display, static_cast<int>(std::strtol(modeID.c_str(), nullptr, 10)));
    int code = 1;
    if (before == nullptr || wanted == nullptr) {
        code = fail(@"显示器没有这个模式。");
    } else if (!setMode(display, wanted, kCGConfigureForAppOnly)) {
        code = fail(@"系统拒绝了这个模式。");
    } else {
        say(@{@"ok" : @YES, @"trial" : @YES});
        if (waitForKeep(std::chrono::steady_clock::now() + trialTime) &&
            setMode(display, wanted, kCGConfigurePermanently)) {
            say(@{@"ok" : @YES, @"kept" : @YES, @"message" : @"已保留新的显示模式。"});
            code = 0;
        } else {
            const bool restored = setMode(display, before, kCGConfigureForAppOnly);
            say(@{
                @"ok" : @(restored),
                @"kept" : @NO,
                @"message" : restored ? @"已恢复原显示模式。" : @"未能恢复原显示模式，请检查显示设置。"
            });
            code = restored ? 0 : 1;
        }
    }
    if (before != nullptr) {
        CGDisplayModeRelease(before);
    }
    if (wanted != nullptr) {
        CGDisplayModeRelease(wanted);
    }
    return code;
}

} // namespace

int main(int count, char** words) {
    @autoreleasepool {
        signal(SIGPIPE, SIG_IGN);
        if (count == 4 && std::string(words[1]) == "trial") {
            return runTrial(words[2], words[3]);
        }
        const bool asked = count == 2 && std::string(words[1]) == "--help";
        std::fputs(help, asked ? stdout : stderr);
        return asked ? 0 : 2;
    }
}
