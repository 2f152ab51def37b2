#pragma once

#include "tests/contract/DesktopUnderTest.h"

#include <atomic>
#include <string>
#include <thread>

// What every run loop keeps. Delays are short enough for real time; only lower limits are taken literally there.
namespace rb {

class RunLoopContract : public ContractTest {};

TEST_P(RunLoopContract, NothingRunsInsideTheCallThatAsksForIt) {
    std::string order;
    loop().post([&] { order += 'p'; });
    const Handle timer = loop().after(0, [&] { order += 't'; });
    EXPECT_EQ(order, "");
    EXPECT_TRUE(user().until([&] { return order.size() == 2; }));
}

TEST_P(RunLoopContract, WorkRunsByDueTimeThenInTheOrderOfAsking) {
    std::string order;
    const Handle late = loop().after(0.03, [&] { order += 'd'; });
    const Handle first = loop().after(0.01, [&] { order += 'b'; });
    const Handle second = loop().after(0.01, [&] { order += 'c'; });
    loop().post([&] {
        order += 'a';
        loop().post([&] { order += 'z'; }); // a turn later, yet before any timer
    });
    EXPECT_TRUE(user().until([&] { return order.size() == 5; }));
    EXPECT_EQ(order, "azbcd");
}

TEST_P(RunLoopContract, AOneShotFiresOnceAndNotBeforeItsTime) {
    const double start = loop().now();
    int fired = 0;
    double when = 0;
    const Handle timer = loop().after(0.02, [&] {
        ++fired;
        when = loop().now();
    });
    ASSERT_TRUE(user().until([&] { return fired > 0; }));
    user().live(0.05);
    EXPECT_EQ(fired, 1);
    EXPECT_GE(when - start, 0.02 - 1e-6);
}

TEST_P(RunLoopContract, ARepeatingTimerKeepsItsPaceAndMayDropItself) {
    const double start = loop().now();
    int fired = 0;
    Handle timer;
    timer = loop().every(0.01, 0.005, [&] {
        if (++fired == 5) {
            timer.reset();
        }
    });
    ASSERT_TRUE(user().until([&] { return fired == 5; }));
    EXPECT_GE(loop().now() - start, 0.05 - 0.005 - 1e-6);
    user().live(0.05);
    EXPECT_EQ(fired, 5);
}

TEST_P(RunLoopContract, ADroppedHandleNeverFiresEvenWhenItIsDueAtTheSameMoment) {
    std::string order;
    Handle victim;
    const Handle killer = loop().after(0.01, [&] {
        order += 'k';
        victim.reset();
    });
    victim = loop().after(0.01, [&] { order += 'v'; });
    Handle early = loop().after(0.005, [&] { order += 'e'; });
    early.reset();
    user().live(0.05);
    EXPECT_EQ(order, "k");
}

TEST_P(RunLoopContract, DroppingTheOwnerInsideTheCallbackIsLegal) {
    struct Owner {
        Handle timer;
        std::string text = "alive";
    };
    auto owner = std::make_unique<Owner>();
    std::string seen;
    owner->timer = loop().after(0.005, [&owner, &seen, kept = std::string("captured")] {
        owner.reset();
        seen = kept; // the callback itself still lives
    });
    EXPECT_TRUE(user().until([&] { return seen == "captured"; }));
}

TEST_P(RunLoopContract, OtherThreadsPostToTheMainThread) {
    constexpr int count = 200;
    int ran = 0;
    bool inOrder = true;
    bool onMainThread = true;
    std::thread thread([&] {
        for (int i = 0; i < count; ++i) {
            loop().post([&, i] {
                inOrder = inOrder && i == ran;
                onMainThread = onMainThread && user().isOnMainThread();
                ++ran;
            });
        }
    });
    thread.join();
    EXPECT_TRUE(user().until([&] { return ran == count; }));
    EXPECT_TRUE(inOrder);
    EXPECT_TRUE(onMainThread);
}

TEST_P(RunLoopContract, BackgroundWorkLeavesTheMainThreadAndReportsBack) {
    std::atomic<bool> wasOnMainThread = true;
    bool reportedOnMainThread = false;
    loop().background(QualityOfService::Utility, [&] {
        wasOnMainThread = user().isOnMainThread();
        loop().post([&] { reportedOnMainThread = user().isOnMainThread(); });
    });
    EXPECT_TRUE(user().until([&] { return reportedOnMainThread; }));
    EXPECT_FALSE(wasOnMainThread);
}

TEST_P(RunLoopContract, DelayedCallsEndWithTheirOwner) {
    std::string order;
    auto calls = std::make_unique<DelayedCalls>(loop());
    calls->after(0.005, [&] {
        order += 'a';
        calls->after(0.005, [&] { order += 'b'; });
    });
    calls->after(0.2, [&] { order += 'c'; });
    ASSERT_TRUE(user().until([&] { return order == "ab"; }));
    calls.reset();
    user().live(0.25);
    EXPECT_EQ(order, "ab");
}

TEST_P(RunLoopContract, TheClocksAreSeparate) {
    const double before = loop().now();
    user().live(0.02);
    EXPECT_GE(loop().now() - before, 0.02 - 1e-6);
    EXPECT_GT(loop().wallClock(), 1.7e9) << "seconds since 1970";
}

} // namespace rb
