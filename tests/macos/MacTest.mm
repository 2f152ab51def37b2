#include "tests/macos/MacTest.h"

extern "C" void* objc_autoreleasePoolPush(void);
extern "C" void objc_autoreleasePoolPop(void* pool);

namespace rb::fake {
namespace {

std::string wholeLog() {
    std::string text;
    for (const std::string& line : log())
        text += "\n    " + line;
    return text.empty() ? "\n    nothing" : text;
}

std::string list(const std::map<std::string, long>& counts) {
    std::string text;
    for (const auto& [name, count] : counts)
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + name;
    return text;
}

// What there is more of now than there was.
std::map<std::string, long> added(std::map<std::string, long> now, const std::map<std::string, long>& before) {
    for (const auto& [name, count] : before)
        if ((now[name] -= count) <= 0)
            now.erase(name);
    return now;
}

} // namespace

::testing::AssertionResult called(const std::string& pattern) {
    for (const Call& call : calls())
        if (call.fits(pattern))
            return ::testing::AssertionSuccess() << "there was " << call.text();
    return ::testing::AssertionFailure() << pattern << " was not called; these were:" << wholeLog();
}

::testing::AssertionResult calledTimes(std::size_t times, const std::string& pattern) {
    std::size_t found = 0;
    for (const Call& call : calls())
        found += call.fits(pattern);
    if (found == times)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << pattern << " was called " << found << " times, not " << times
                                         << "; all calls:" << wholeLog();
}

::testing::AssertionResult calledInOrder(const std::vector<std::string>& patterns) {
    std::size_t next = 0;
    for (const Call& call : calls())
        if (next < patterns.size() && call.fits(patterns[next]))
            ++next;
    if (next == patterns.size())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << patterns[next] << " was not called"
                                         << (next ? " after " + patterns[next - 1] : std::string())
                                         << "; these were:" << wholeLog();
}

MacTest::MacTest()
    : pool_(objc_autoreleasePoolPush()) {
    reset();
    (void)NSNull.null; // lives as long as the program
    before_ = liveObjects();
}

void MacTest::endTurn() {
    for (const Call& call : calls("-[CALayer setNeedsLayout]")) {
        CALayer* layer = call.receiver();
        [layer.delegate layoutSublayersOfLayer:layer];
    }
}

void MacTest::TearDown() {
    forgetCalls();
    objc_autoreleasePoolPop(pool_);
    // The system's own objects still live here: what they hold of the code under test counts.
    const auto product = added(liveProductObjects(), before_);
    if (liveRegistryReferences() != 0)
        ADD_FAILURE() << liveRegistryReferences() << " references to I/O Kit objects were not released";
    reset();
    const auto left = added(liveObjects(), before_);
    if (!product.empty())
        ADD_FAILURE() << "still alive after the test: " << list(product)
                      << " (a retain cycle, or an observer, timer, monitor or handler was not removed)";
    else if (!left.empty())
        ADD_FAILURE() << "leaked: " << list(left);
}

} // namespace rb::fake
