#include "desktops/linux/RunLoop.h"

#include "desktops/linux/Log.h"
#include "tests/linux/LinuxFixture.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <atomic>
#include <cmath>
#include <thread>

namespace rb {

namespace {

class LinuxRunLoopTest : public EventLoopFixture {
protected:
    RecordingLog log_;
    LinuxRunLoop loop_{log_};
};

TEST_F(LinuxRunLoopTest, ALoopWithinACallbackRunsWhatFollows) {
    std::string order;
    loop_.post([&] {
        order += '(';
        QEventLoop inner; // as a menu or a drag has
        loop_.post([&] { inner.quit(); });
        inner.exec();
        order += ')';
    });
    loop_.post([&] { order += 'p'; });
    const Handle timer = loop_.after(0, [&] { order += 't'; });
    EXPECT_TRUE(until([&] { return order.size() == 4; }));
    EXPECT_EQ(order, "(pt)");
}

TEST_F(LinuxRunLoopTest, TimersWithToleranceShareWakeUps) {
    int early = 0;
    int late = 0;
    double earlyTime = 0;
    double lateTime = 0;
    const Handle first = loop_.every(0.03, 0.03, [&] {
        ++early;
        earlyTime = loop_.now();
    });
    const Handle second = loop_.after(0.05, [&] {
        ++late;
        lateTime = loop_.now();
    });
    ASSERT_TRUE(until([&] { return late == 1; }));
    EXPECT_EQ(early, 1) << "it waited for the one that can't";
    EXPECT_LT(lateTime - earlyTime, 0.01);
}

TEST_F(LinuxRunLoopTest, MissedRoundsAreDroppedAndThePaceStays) {
    const double start = loop_.now();
    std::vector<double> rounds;
    const Handle timer = loop_.every(0.02, 0, [&] {
        rounds.push_back((loop_.now() - start) / 0.02);
        if (rounds.size() == 1) {
            std::this_thread::sleep_for(std::chrono::milliseconds(70)); // busy through three rounds
        }
    });
    ASSERT_TRUE(until([&] { return rounds.size() == 3; }));
    EXPECT_GE(rounds[1], 4.4) << "the missed rounds are one";
    EXPECT_GE(std::floor(rounds[2]) - std::floor(rounds[1]), 1);
}

TEST_F(LinuxRunLoopTest, WithoutTimersTheProcessSleeps) {
    Handle timer = loop_.after(0.01, [] {});
    Handle dropped = loop_.after(0.02, [] {});
    dropped.reset();
    until([] { return false; }, 60);
    EXPECT_EQ(loop_.timerCount(), 0U);
    QEventLoop inner;
    int turns = 0;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &inner, [&] { ++turns; });
    std::thread waker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        loop_.post([&] { inner.quit(); });
    });
    inner.exec();
    waker.join();
    EXPECT_LE(turns, 4);
}

TEST_F(LinuxRunLoopTest, BackgroundWorkIsFinishedBeforeTheLoopGoes) {
    std::atomic<int> done = 0;
    {
        LinuxRunLoop other(log_);
        for (int job = 0; job < 20; ++job) {
            other.background(QualityOfService::Utility, [&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                ++done;
            });
        }
    }
    EXPECT_EQ(done, 20);
}

TEST_F(LinuxRunLoopTest, AForgottenTimerIsNamedAtTheEnd) {
    EXPECT_DEBUG_DEATH(
        {
            Handle forgotten;
            LinuxLog log;
            LinuxRunLoop other(log);
            forgotten = other.after(100, [] {});
            // The loop dies first.
        },
        "1 timers were left behind");
}

} // namespace

} // namespace rb
