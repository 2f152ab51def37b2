#include "helpers/linux/display/DdcutilBus.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ddcutil_c_api.h>
#include <ddcutil_status_codes.h>
#include <stdio_ext.h>
#include <thread>
#include <unistd.h>

namespace rb {

namespace {

Exchange exchangeOf(DDCA_Status status) {
    switch (status) {
    case 0:
        return Exchange::Done;
    case DDCRC_REPORTED_UNSUPPORTED:
    case DDCRC_DETERMINED_UNSUPPORTED:
        return Exchange::Unsupported;
    case DDCRC_DDC_DATA:
    case DDCRC_RETRIES:
        return Exchange::Garbled;
    case -EACCES:
    case -EPERM:
        return Exchange::NoAccess;
    default:
        return Exchange::NoReply;
    }
}

// Asked of the kernel first, so that what is missing is told in words.
Exchange accessTo(int bus) {
    const std::string device = "/dev/i2c-" + std::to_string(bus);
    if (::access(device.c_str(), F_OK) != 0) {
        return Exchange::NoBus;
    }
    return ::access(device.c_str(), R_OK | W_OK) == 0 ? Exchange::Done : Exchange::NoAccess;
}

// One monitor, opened for one exchange.
class OpenDisplay {
public:
    explicit OpenDisplay(int bus) {
        DDCA_Display_Identifier identifier = nullptr;
        DDCA_Display_Ref reference = nullptr;
        status_ = ddca_create_busno_display_identifier(bus, &identifier);
        if (status_ == 0) {
            status_ = ddca_get_display_ref(identifier, &reference);
            ddca_free_display_identifier(identifier);
        }
        if (status_ == 0) {
            status_ = ddca_open_display2(reference, true, &handle_);
        }
    }
    ~OpenDisplay() {
        if (handle_) {
            ddca_close_display(handle_);
        }
    }
    OpenDisplay(const OpenDisplay&) = delete;
    OpenDisplay& operator=(const OpenDisplay&) = delete;

    DDCA_Status status() const { return status_; }
    DDCA_Display_Handle handle() const { return handle_; }

private:
    DDCA_Status status_ = 0;
    DDCA_Display_Handle handle_ = nullptr;
};

} // namespace

void keepLibraryOffStandardOutput() {
    __fpurge(stdout); // what it said while it was loaded
    ddca_set_fout(stderr);
}

DdcutilBus::DdcutilBus() {
    // What is written is not read back: a monitor that just went to standby would wake.
    ddca_enable_verify(false);
}

PowerReading DdcutilBus::readPowerMode(int bus) {
    if (const Exchange access = accessTo(bus); access != Exchange::Done) {
        return {access, 0};
    }
    const OpenDisplay display(bus);
    if (display.status() != 0) {
        return {exchangeOf(display.status()), 0};
    }
    DDCA_Non_Table_Vcp_Value value{};
    const DDCA_Status status = ddca_get_non_table_vcp_value(display.handle(), powerModeFeature, &value);
    return {exchangeOf(status), value.sl};
}

Exchange DdcutilBus::writePowerMode(int bus, std::uint8_t mode) {
    if (mode != powerOn && mode != powerStandby) {
        return Exchange::Unsupported;
    }
    if (const Exchange access = accessTo(bus); access != Exchange::Done) {
        return access;
    }
    const OpenDisplay display(bus);
    return display.status() != 0
               ? exchangeOf(display.status())
               : exchangeOf(ddca_set_non_table_vcp_value(display.handle(), powerModeFeature, 0, mode));
}

void DdcutilBus::pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

} // namespace rb
