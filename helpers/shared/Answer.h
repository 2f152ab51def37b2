#pragma once

#include <string>

namespace rb {

// To be called first: a standard descriptor that whoever started us has closed is filled with one that fails, so that
// no file or connection of ours takes its number and gets what is said.
void guardStandardDescriptors();

// One line of JSON on standard output, at once. False when nobody reads it.
bool sayLine(const std::string& json);

// A JSON object of an outcome: "ok", further flags, and a message for the user.
class Outcome {
public:
    explicit Outcome(bool ok);
    Outcome& flag(const char* name, bool value);
    // UTF-8; malformed bytes are replaced.
    Outcome& message(const std::string& text);
    std::string text() const { return text_ + "}"; }

private:
    std::string text_;
};

// The text as a JSON string with its quotes; malformed UTF-8 is replaced.
std::string quoted(const std::string& text);

} // namespace rb
