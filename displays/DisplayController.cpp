#include "displays/DisplayController.h"

#include "platform/Log.h"

namespace rb {

void DisplayController::show() {
    desktop_.log.write("the Screens and connections window is not built yet");
}

} // namespace rb
