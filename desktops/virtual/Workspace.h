#pragma once

#include "desktops/virtual/RunLoop.h"
#include "platform/Workspace.h"

#include <utility>

namespace rb {

// Writes down what was handed over. Programs take everything until a test says that they don't.
class VirtualWorkspace final : public Workspace {
public:
    explicit VirtualWorkspace(VirtualRunLoop& loop)
        : loop_(loop) {}

    void openFile(const std::string& path, Done done) override {
        loop_.requireMainThread("Workspace::openFile");
        opened_.push_back(path);
        tell(std::move(done));
    }
    void openInTextEditor(const std::string& path, Done done) override {
        loop_.requireMainThread("Workspace::openInTextEditor");
        edited_.push_back(path);
        tell(std::move(done));
    }
    void openURL(const std::string& url) override {
        loop_.requireMainThread("Workspace::openURL");
        urls_.push_back(url);
    }
    void revealFiles(const std::vector<std::string>& paths) override {
        loop_.requireMainThread("Workspace::revealFiles");
        revealed_.insert(revealed_.end(), paths.begin(), paths.end());
    }

    const std::vector<std::string>& opened() const { return opened_; }
    const std::vector<std::string>& edited() const { return edited_; }
    const std::vector<std::string>& urls() const { return urls_; }
    const std::vector<std::string>& revealed() const { return revealed_; }
    // Whether programs take files from now on.
    void setTakesFiles(bool takes) { takes_ = takes; }

private:
    void tell(Done done) {
        if (done) {
            loop_.post([done = std::move(done), taken = takes_] { done(taken); });
        }
    }

    VirtualRunLoop& loop_;
    bool takes_ = true;
    std::vector<std::string> opened_;
    std::vector<std::string> edited_;
    std::vector<std::string> urls_;
    std::vector<std::string> revealed_;
};

} // namespace rb
