#include "helpers/linux/display/I2cDevice.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace rb {

namespace {

constexpr double lockPatience = 1.0; // seconds
constexpr double lockPause = 0.05;
constexpr double patience = 3.5; // of the five seconds that a command has

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

I2cDevice::I2cDevice(int bus)
    : device_("/dev/i2c-" + std::to_string(bus))
    , end_(now() + patience)
    , trouble_(open()) {}

I2cDevice::~I2cDevice() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

I2cDevice::Trouble I2cDevice::open() {
    file_ = ::open(device_.c_str(), O_RDWR | O_CLOEXEC);
    if (file_ < 0) {
        if (errno == EACCES || errno == EPERM) {
            return Trouble::NoAccess;
        }
        // The class is there as soon as the module is, whether or not there are buses.
        return ::access("/sys/class/i2c-dev", F_OK) == 0 ? Trouble::NoBus : Trouble::NoModule;
    }
    const double lockEnd = now() + lockPatience;
    while (::flock(file_, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || now() > lockEnd) {
            return Trouble::InUse;
        }
        pause(lockPause);
    }
    return Trouble::None;
}

std::optional<Exchange> I2cDevice::transfer(std::span<std::uint8_t> bytes, std::uint16_t flags) const {
    if (trouble_ != Trouble::None) {
        return trouble_ == Trouble::NoModule || trouble_ == Trouble::NoBus ? Exchange::NoBus : Exchange::NoAccess;
    }
    i2c_msg message{
        .addr = ddcDevice, .flags = flags, .len = static_cast<std::uint16_t>(bytes.size()), .buf = bytes.data()};
    i2c_rdwr_ioctl_data transaction{.msgs = &message, .nmsgs = 1};
    int done = -1;
    while (done < 0 && now() < end_) {
        done = ::ioctl(file_, I2C_RDWR, &transaction);
        if (done < 0 && errno != EINTR) {
            break;
        }
    }
    return done == 1 ? std::nullopt : std::optional(Exchange::NoReply);
}

std::optional<Exchange> I2cDevice::write(std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> copy(bytes.begin(), bytes.end()); // the kernel's type isn't const
    return transfer(copy, 0);
}

std::optional<Exchange> I2cDevice::read(std::span<std::uint8_t> bytes) {
    return transfer(bytes, I2C_M_RD);
}

void I2cDevice::pause(double seconds) {
    if (now() < end_) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }
}

std::string I2cDevice::explainAccess(Exchange /*exchange*/) const {
    switch (trouble_) {
    case Trouble::NoModule:
        return "没有 " + device_ + "：请加载内核模块 i2c-dev（sudo modprobe i2c-dev）。";
    case Trouble::NoBus:
        return "控制通道 " + device_ + " 已不存在；显示器可能已断开，请按显示器电源键。";
    case Trouble::NoAccess:
        return "没有访问 " + device_ + " 的权限：请将用户加入 i2c 组（sudo usermod -aG i2c 用户名）后重新登录。";
    case Trouble::InUse:
        return "另一个程序正在使用 " + device_ + "，请稍后再试。";
    case Trouble::None:
        return "无法使用 " + device_ + "。";
    }
    return {};
}

} // namespace rb
