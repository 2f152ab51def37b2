#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rb {

// Whether a binary property list is one that can be read without harm: every object lies inside the file, nothing
// contains itself, and neither its depth nor what its shared objects grow to when they are written out is unreasonable.
// The library that reads it makes a tree, by recursion, and asks none of this. Empty, or what is wrong.
std::string plistFault(std::string_view file);

} // namespace rb
