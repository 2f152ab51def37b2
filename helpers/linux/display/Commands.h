#pragma once

#include "helpers/linux/display/Channels.h"
#include "helpers/linux/display/PowerBus.h"

#include <string>

// The commands about one display, as the JSON that answers them.
namespace rb {

std::string probe(const Channel& channel, PowerBus& bus);
std::string sleepDisplay(const Channel& channel, PowerBus& bus);
std::string wakeDisplay(const Channel& channel, PowerBus& bus);

} // namespace rb
