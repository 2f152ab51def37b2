#pragma once

#include <string>

// Hidden folders in which copies are made, noted for as long as they last, so that the next start removes what a
// program that was killed in mid-copy left behind. Any thread.
namespace rb {

// Makes a folder of its own, ".rookbay-…", in `folder` and notes it. Empty when that fails; errno says why.
std::string makeCopyFolder(const std::string& folder);
// Removes it, empty by now, and the note.
void removeCopyFolder(const std::string& path);
// Removes all folders that are noted, with what they hold: copies alone. Call it while no copy is under way.
void removeForgottenCopies();
bool hasForgottenCopies();

} // namespace rb
