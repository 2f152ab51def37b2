#pragma once

#include "platform/URLSessions.h"

namespace rb {

// Requests made by the update helper, one process each: addresses of HTTPS or of this machine only, answers of a
// few megabytes at most.
class LinuxURLSessions final : public URLSessions {
public:
    std::unique_ptr<URLSession> createEphemeralSession(const URLSessionSpec& spec) override;
};

} // namespace rb
