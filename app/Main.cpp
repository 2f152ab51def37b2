#include "app/Main.h"

#include "app/AppDelegate.h"
#include "platform/Application.h"

namespace rb {

int runRookBay(const Desktop& desktop) {
    AppDelegate delegate(desktop);
    return desktop.application.run(delegate);
}

} // namespace rb
