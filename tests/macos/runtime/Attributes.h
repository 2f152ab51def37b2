#pragma once

#include <map>
#include <string>

namespace rb::fake {

// Extended attributes by "path name"; a test fills and empties it.
std::map<std::string, std::string>& attributes();

} // namespace rb::fake
