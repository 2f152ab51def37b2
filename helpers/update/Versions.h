#pragma once

#include <compare>
#include <string>
#include <string_view>

namespace rb {

// The order of versions as people number them: 1.9 < 1.10, 1.0 = 1.0.0, and what is marked as coming before a version
// does (1.0b2, 1.0~rc1, 1.0-beta < 1.0). Numbers may have any length; signs between them only separate.
std::weak_ordering compareVersions(std::string_view one, std::string_view other);

// Whether it is made of letters, digits and ".+-~" with a digit in front, and no longer than a version needs to be.
bool isVersion(std::string_view text);

// A Debian package's version without epoch and Debian's revision: "1:0.2.0-1" is 0.2.0.
std::string upstreamVersion(std::string_view debianVersion);

} // namespace rb
