#pragma once

#include "platform/URLSessions.h"

namespace rb {

// NSURLSession with an ephemeral configuration that ignores cached data.
class MacURLSessions final : public URLSessions {
public:
    std::unique_ptr<URLSession> createEphemeralSession(const URLSessionSpec& spec) override;
};

} // namespace rb
