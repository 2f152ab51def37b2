#include "desktops/virtual/SessionLock.h"

#include "desktops/virtual/RunLoop.h"

namespace rb {

void VirtualSessionLock::startScreenSaver() {
    loop_.requireMainThread("SessionLock::startScreenSaver");
    log_.push_back({Deed::StartScreenSaver, loop_.now(), true});
}

void VirtualSessionLock::sleepDisplays() {
    log_.push_back({Deed::SleepDisplays, loop_.now(), loop_.isOnMainThread()});
}

} // namespace rb
