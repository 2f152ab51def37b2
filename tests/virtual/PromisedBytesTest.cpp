#include "platform/PromisedBytes.h"

#include "desktops/virtual/RunLoop.h"

#include <gtest/gtest.h>

#include <thread>

namespace rb {

namespace {

SharedBytes some(std::uint8_t byte) {
    return std::make_shared<const Bytes>(Bytes{byte});
}

TEST(PromisedBytesTest, ItIsKeptOffTheMainThreadAndToldOnIt) {
    VirtualRunLoop loop;
    bool offMainThread = false;
    const auto promise = PromisedBytes::begin(loop, [&](const std::atomic<bool>& givenUp) {
        offMainThread = !loop.isOnMainThread();
        return givenUp ? nullptr : some(7);
    });
    int told = 0;
    Handle first = promise->onSettled([&] {
        ++told;
        first.reset();
        EXPECT_TRUE(loop.isOnMainThread());
        EXPECT_EQ(*promise->bytes(), Bytes{7});
    });
    EXPECT_TRUE(promise->isPending());
    EXPECT_FALSE(promise->isBroken());
    EXPECT_EQ(promise->await(0), nullptr);
    loop.advance(0);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(offMainThread);
    EXPECT_FALSE(promise->isPending());
    EXPECT_FALSE(promise->isBroken());
    EXPECT_TRUE(PromisedBytes::settled(nullptr)->isBroken());
}

TEST(PromisedBytesTest, NobodyWantingItEndsIt) {
    VirtualRunLoop loop;
    bool begun = false;
    PromisedBytes::begin(loop, [&](const std::atomic<bool>&) {
        begun = true;
        return some(1);
    });
    loop.advance(1);
    EXPECT_FALSE(begun);
    // In the middle of it.
    bool noticed = false;
    std::shared_ptr<PromisedBytes> promise = PromisedBytes::begin(loop, [&](const std::atomic<bool>& givenUp) {
        promise = nullptr;
        noticed = givenUp;
        return some(1);
    });
    loop.advance(1);
    EXPECT_TRUE(noticed);
}

TEST(PromisedBytesTest, WhoMustWaitsForAnotherThread) {
    VirtualRunLoop loop;
    const auto promise = PromisedBytes::begin(loop, [](const std::atomic<bool>&) { return some(9); });
    constexpr double longEnough = 60;
    SharedBytes bytes;
    std::thread waiting([&] { bytes = promise->await(longEnough); });
    loop.advance(0);
    waiting.join();
    ASSERT_TRUE(bytes);
    EXPECT_EQ(*bytes, Bytes{9});
}

} // namespace

} // namespace rb
