#include "desktops/linux/SingleInstance.h"

#include "tests/linux/LinuxFixture.h"

#include <QByteArray>

namespace rb {

namespace {

using Outcome = SingleInstance::Outcome;

// Where the session has no bus.
class SingleInstanceTest : public testing::Test {
protected:
    SingleInstanceTest() {
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime_.path()));
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(data_.path()));
    }
    TemporaryFolder runtime_;
    TemporaryFolder data_;
    RecordingLog log_;
};

TEST_F(SingleInstanceTest, TheLockDecidesAndGoesWithItsHolder) {
    SingleInstance second(log_);
    {
        SingleInstance first(log_);
        EXPECT_EQ(first.claim({}), Outcome::First);
        EXPECT_EQ(second.claim({"--connections"}), Outcome::Failed);
        EXPECT_THAT(second.message(), testing::HasSubstr("已在运行"));
    }
    EXPECT_EQ(second.claim({}), Outcome::First);
}

TEST_F(SingleInstanceTest, WithoutARuntimeFolderTheDataFolderServes) {
    qunsetenv("XDG_RUNTIME_DIR");
    SingleInstance first(log_);
    EXPECT_EQ(first.claim({}), Outcome::First);
    EXPECT_TRUE(std::filesystem::exists(data_ / "rook-bay/rook-bay.lock"));
    SingleInstance second(log_);
    EXPECT_EQ(second.claim({}), Outcome::Failed);
}

TEST_F(SingleInstanceTest, ALinkInItsPlaceIsNotFollowed) {
    std::filesystem::create_symlink(data_ / "elsewhere", runtime_ / "rook-bay.lock");
    SingleInstance first(log_);
    EXPECT_EQ(first.claim({}), Outcome::Failed);
    EXPECT_FALSE(std::filesystem::exists(data_ / "elsewhere"));
}

} // namespace

} // namespace rb
