#include "helpers/macos/ResolutionHelper/Trial.h"

#include "helpers/shared/Answer.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <poll.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr std::chrono::seconds trialTime{20};

int fail(const char* message) {
    sayLine(Outcome(false).flag("trial", false).message(message).text());
    return 1;
}

// One mode, released with it.
class Mode {
public:
    explicit Mode(CGDisplayModeRef mode)
        : mode_(mode) {}
    ~Mode() {
        if (mode_ != nullptr) {
            CGDisplayModeRelease(mode_);
        }
    }
    Mode(const Mode&) = delete;
    Mode& operator=(const Mode&) = delete;
    CGDisplayModeRef get() const { return mode_; }

private:
    CGDisplayModeRef mode_;
};

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
bool waitForKeep(int descriptor, std::chrono::steady_clock::time_point deadline) {
    std::string input;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
        const int ready = left.count() > 0 ? poll(&waiting, 1, static_cast<int>(left.count())) : 0;
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        std::array<char, 512> buffer{};
        const ssize_t length = ready > 0 ? read(descriptor, buffer.data(), buffer.size()) : 0;
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

} // namespace

int runTrial(const std::string& identity, const std::string& modeID, int input) {
    const CGDirectDisplayID display = displayNamed(identity);
    if (display == 0) {
        return fail("找不到这块显示器；它可能已断开或被替换。");
    }
    const Mode before(CGDisplayCopyDisplayMode(display));
    int number = 0;
    const char* end = modeID.data() + modeID.size();
    const auto parsed = std::from_chars(modeID.data(), end, number);
    const Mode wanted(parsed.ec == std::errc() && parsed.ptr == end ? copyMode(display, number) : nullptr);
    if (before.get() == nullptr || wanted.get() == nullptr) {
        return fail("显示器没有这个模式。");
    }
    const auto deadline = std::chrono::steady_clock::now() + trialTime;
    if (!setMode(display, wanted.get(), kCGConfigureForAppOnly)) {
        return fail("系统拒绝了这个模式。");
    }
    sayLine(Outcome(true).flag("trial", true).text());
    if (waitForKeep(input, deadline) && setMode(display, wanted.get(), kCGConfigurePermanently)) {
        sayLine(Outcome(true).flag("kept", true).message("已保留新的显示模式。").text());
        return 0;
    }
    const bool restored = setMode(display, before.get(), kCGConfigureForAppOnly);
    sayLine(Outcome(restored)
                .flag("kept", false)
                .message(restored ? "已恢复原显示模式。" : "未能恢复原显示模式，请检查显示设置。")
                .text());
    return restored ? 0 : 1;
}

} // namespace rb
