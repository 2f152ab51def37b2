#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rb {

// Paths of the local files in a text/uri-list, in its order. Comments, other schemes, other machines' files and
// entries that are broken (bad percent signs, a zero byte, not absolute) are left out; never fails.
std::vector<std::string> filesOfUriList(std::string_view list);

} // namespace rb
