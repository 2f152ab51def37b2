#include "desktops/macos/URLSessions.h"

#include "desktops/macos/Bridge.h"

#include <utility>

namespace rb {

namespace {

URLAnswer answerFrom(NSData* data, NSURLResponse* response, NSError* error) {
    if (error != nil || ![response isKindOfClass:NSHTTPURLResponse.class]) {
        return {.failed = true};
    }
    URLAnswer answer;
    answer.status = static_cast<int>(static_cast<NSHTTPURLResponse*>(response).statusCode);
    if (data != nil) {
        answer.text = utf8String([[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding]);
    }
    return answer;
}

class MacURLSession final : public URLSession {
public:
    explicit MacURLSession(double timeout) {
        NSURLSessionConfiguration* configuration = NSURLSessionConfiguration.ephemeralSessionConfiguration;
        configuration.timeoutIntervalForRequest = timeout;
        configuration.requestCachePolicy = NSURLRequestReloadIgnoringLocalCacheData;
        session_ = [NSURLSession sessionWithConfiguration:configuration];
    }
    // Tasks under way run to their end; their answers find nobody.
    ~MacURLSession() override {
        *alive_ = false;
        [session_ finishTasksAndInvalidate];
    }
    MacURLSession(const MacURLSession&) = delete;
    MacURLSession& operator=(const MacURLSession&) = delete;

    bool startDataTask(const std::string& text, std::function<void(const URLAnswer&)> done) override {
        NSURL* url = [NSURL URLWithString:nsString(text)];
        if (url == nil || text.empty()) {
            return false;
        }
        const auto alive = alive_;
        // Judged on the session's queue, told on the main one.
        NSURLSessionDataTask* task =
            [session_ dataTaskWithURL:url
                    completionHandler:^(NSData* data, NSURLResponse* response, NSError* error) {
                        const URLAnswer answer = answerFrom(data, response, error);
                        dispatch_async(dispatch_get_main_queue(), ^{
                            if (*alive) {
                                const auto tell = done; // it may destroy the session
                                tell(answer);
                            }
                        });
                    }];
        [task resume];
        return true;
    }

private:
    NSURLSession* session_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // main thread only
};

} // namespace

std::unique_ptr<URLSession> MacURLSessions::createEphemeralSession(const URLSessionSpec& spec) {
    return std::make_unique<MacURLSession>(spec.requestTimeout);
}

} // namespace rb
