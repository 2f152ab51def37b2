#pragma once

#include <QString>

#include <string>

namespace rb {

// A tool tip that shows exactly this text: Qt would take texts that look like HTML for HTML, and tool tips show what
// other programs copied. Long lines wrap.
QString plainToolTip(const std::string& text);

} // namespace rb
