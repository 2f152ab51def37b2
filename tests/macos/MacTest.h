#pragma once

#include "tests/macos/Fakes.h"

#include <gtest/gtest.h>

// The fixture of all tests of the macOS desktop: each test runs in an autorelease pool of its own, and afterwards no
// object of the code under test may be alive.
namespace rb::fake {

// Whether a call was made: "-[NSStatusBar statusItemWithLength:]", or with its arguments
// "-[NSStatusBar statusItemWithLength:] -1". A failure shows what was called instead.
::testing::AssertionResult called(const std::string& pattern);
::testing::AssertionResult calledTimes(std::size_t times, const std::string& pattern);
// These calls in this order; others may lie between them.
::testing::AssertionResult calledInOrder(const std::vector<std::string>& patterns);

class MacTest : public ::testing::Test {
protected:
    MacTest();
    // Override it to destroy members first, then call this one.
    void TearDown() override;
    // Lays out the layers that asked for it, as Core Animation does before it commits a turn.
    static void endTurn();

private:
    void* pool_;
    std::map<std::string, long> before_;
};

} // namespace rb::fake
