#include "helpers/linux/display/I2cDevices.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <string>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace rb {

namespace {

constexpr std::uint16_t controlChannel = 0x37; // of monitors, by the standard
constexpr double lockPatience = 1.0;           // seconds
constexpr double lockPause = 0.05;

class I2cDevice final : public I2cBus {
public:
    explicit I2cDevice(int file)
        : file_(file) {}
    ~I2cDevice() override { ::close(file_); }
    I2cDevice(const I2cDevice&) = delete;
    I2cDevice& operator=(const I2cDevice&) = delete;

    bool write(std::span<const std::uint8_t> bytes) override {
        std::vector<std::uint8_t> copy(bytes.begin(), bytes.end()); // the kernel's type isn't const
        return transfer(copy, 0);
    }
    bool read(std::span<std::uint8_t> bytes) override { return transfer(bytes, I2C_M_RD); }

private:
    bool transfer(std::span<std::uint8_t> bytes, std::uint16_t flags) const {
        i2c_msg message{.addr = controlChannel,
                        .flags = flags,
                        .len = static_cast<std::uint16_t>(bytes.size()),
                        .buf = bytes.data()};
        i2c_rdwr_ioctl_data transaction{.msgs = &message, .nmsgs = 1};
        int done = 0;
        do {
            done = ::ioctl(file_, I2C_RDWR, &transaction);
        } while (done < 0 && errno == EINTR);
        return done == 1;
    }

    int file_;
};

Exchange failureOf(int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return Exchange::NoAccess;
    case ENOENT:
        // The class is there as soon as the module is, whether or not there are buses.
        return ::access("/sys/class/i2c-dev", F_OK) == 0 ? Exchange::NoBus : Exchange::NoModule;
    default:
        return Exchange::NoBus;
    }
}

} // namespace

I2cBuses::Opened I2cDevices::open(int bus) {
    const std::string device = "/dev/i2c-" + std::to_string(bus);
    const int file = ::open(device.c_str(), O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return {nullptr, failureOf(errno)};
    }
    auto opened = std::make_unique<I2cDevice>(file);
    for (const double end = now() + lockPatience; ::flock(file, LOCK_EX | LOCK_NB) != 0; pause(lockPause)) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || now() > end) {
            return {nullptr, Exchange::Busy};
        }
    }
    return {std::move(opened), Exchange::Done};
}

void I2cDevices::pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

double I2cDevices::now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace rb
