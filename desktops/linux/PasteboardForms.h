#pragma once

#include "desktops/linux/SelectionOwner.h"
#include "platform/Pasteboards.h"

#include <optional>
#include <string>
#include <vector>

// How the contents of a pasteboard are called and written among X11's programs.
namespace rb {

class RunLoop;

// The targets under which a type may be found, the best first.
std::vector<std::string> targetsOf(const std::string& type);
// The forms in which contents are offered to others; what takes long to make is made on the loop's threads, and only
// when somebody asks. Nothing for data of a type that no program here knows.
std::vector<SelectionForm> formsOf(const PasteboardContents& contents, RunLoop& loop);
// What came under that target as well-formed UTF-8. Characters of zero, which no program here can show or keep, are
// left out.
std::string textFrom(const std::string& target, const Bytes& bytes);

} // namespace rb
