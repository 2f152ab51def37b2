#pragma once

#include <optional>
#include <string>

// Single values in the settings files of other programs ([group], key=value), with everything else left exactly as it
// is. The empty group is what stands before the first header. Pure functions, any thread.
namespace rb {

// As it is written there, without blanks around it.
std::optional<std::string> iniValue(const std::string& text, const std::string& group, const std::string& key);
// The text with the value set, or without the key. A line that is there is replaced, a new one ends its group.
std::string withIniValue(const std::string& text, const std::string& group, const std::string& key,
                         const std::optional<std::string>& value);
// As Qt 5 and 6 both read it in a settings file: ASCII only.
std::string qtIniEscaped(const std::string& utf8);
// What Qt reads there.
std::string qtIniUnescaped(const std::string& written);

} // namespace rb
