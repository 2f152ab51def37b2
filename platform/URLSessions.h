#pragma once

#include <functional>
#include <memory>
#include <string>

namespace rb {

struct URLSessionSpec {
    double requestTimeout = 60; // seconds without any news of a request
};

// What became of a request.
struct URLAnswer {
    bool failed = false; // no answer, or one that broke off or was too long; then the rest says nothing
    int status = 0;      // of HTTP
    std::string text = {}; // the body; empty when it isn't UTF-8
};

// Requests that keep nothing: no cookies, no cache, neither read nor written. Destruction ends what is under way
// without an answer. Main thread only.
class URLSession {
public:
    virtual ~URLSession() = default;
    // False when the text is no address that can be fetched; then nothing is told. Else `done` is told once, in a
    // later turn.
    virtual bool startDataTask(const std::string& url, std::function<void(const URLAnswer&)> done) = 0;
};

class URLSessions {
public:
    virtual ~URLSessions() = default;
    virtual std::unique_ptr<URLSession> createEphemeralSession(const URLSessionSpec& spec) = 0;
};

} // namespace rb
