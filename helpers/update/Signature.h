#pragma once

#include <optional>
#include <string>

namespace rb {

// The key that updates are signed with (Ed25519, 32 bytes as base64). Checking needs nothing but the file.
class UpdateKey {
public:
    // Nothing when the text is no such key.
    static std::optional<UpdateKey> read(const std::string& base64);
    // Whether the open file, as it is now, carries this signature (64 bytes as base64). False also for whatever can't
    // be read. The file isn't followed through its name, so nobody can put another one in between.
    bool hasSigned(int file, const std::string& base64Signature) const;

private:
    std::string bytes_;
};

} // namespace rb
