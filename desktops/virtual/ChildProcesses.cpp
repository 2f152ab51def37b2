#include "desktops/virtual/ChildProcesses.h"

#include "desktops/virtual/RunLoop.h"

#include <utility>

namespace rb {

namespace {

constexpr const char* resourceFolder = "/resources/";
constexpr const char* temporaryFolder = "/tmp/";

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

// What the product holds of a child.
class VirtualChildHandle final : public ChildProcess {
public:
    explicit VirtualChildHandle(std::shared_ptr<VirtualChild> child)
        : child_(std::move(child)) {}
    ~VirtualChildHandle() override {
        child_->attached_ = false;
        child_->inputClosed_ = true;
    }
    VirtualChildHandle(const VirtualChildHandle&) = delete;
    VirtualChildHandle& operator=(const VirtualChildHandle&) = delete;

    bool isRunning() const override { return child_->running_; }
    void write(std::string_view text) override {
        if (child_->running_ && !child_->inputClosed_) {
            child_->input_ += text;
        }
    }
    void closeInput() override { child_->inputClosed_ = true; }
    void kill() override {
        child_->killed_ = true;
        if (child_->diesOfKill_) {
            child_->exit();
        }
    }

private:
    std::shared_ptr<VirtualChild> child_;
};

void VirtualChild::say(const std::string& text) {
    if (!running_) {
        return;
    }
    if (!start_.outputFile.empty()) {
        const auto file = files_->find(start_.outputFile);
        if (file != files_->end()) {
            file->second += text;
        }
        return;
    }
    loop_.post([this, text] {
        if (attached_ && start_.output) {
            start_.output(text);
        }
    });
}

void VirtualChild::exit() {
    if (!std::exchange(running_, false)) {
        return;
    }
    loop_.post([this] {
        if (attached_ && start_.ended) {
            start_.ended();
        }
    });
}

std::optional<std::string> VirtualChildProcesses::resourcePath(const std::string& name) const {
    return installed_.contains(name) ? std::optional(resourceFolder + name) : std::nullopt;
}

std::unique_ptr<ChildProcess> VirtualChildProcesses::start(ChildStart start) {
    loop_.requireMainThread("ChildProcesses::start");
    if (startsFail_) {
        return nullptr;
    }
    const auto installed = installed_.find(nameOf(start.program));
    if (installed == installed_.end()) {
        return nullptr;
    }
    const auto child = std::make_shared<VirtualChild>(loop_, std::move(start));
    child->files_ = &files_;
    children_.push_back(child);
    if (installed->second) {
        loop_.post([script = installed->second, child] { script(*child); });
    }
    return std::make_unique<VirtualChildHandle>(child);
}

std::optional<std::string> VirtualChildProcesses::createTemporaryFile(const std::string& name) {
    const std::string path = temporaryFolder + name;
    if (filesFail_ || files_.contains(path)) {
        return std::nullopt;
    }
    files_[path] = {};
    return path;
}

std::optional<std::string> VirtualChildProcesses::takeTemporaryFile(const std::string& path, std::size_t limit) {
    const auto found = files_.extract(path);
    if (found.empty() || found.mapped().size() > limit) {
        return std::nullopt;
    }
    return found.mapped();
}

void VirtualChildProcesses::install(const std::string& name, Script script) {
    installed_[name] = std::move(script);
}

std::vector<std::shared_ptr<VirtualChild>> VirtualChildProcesses::running(const std::string& name) const {
    std::vector<std::shared_ptr<VirtualChild>> found;
    for (const auto& child : children_) {
        if (child->isRunning() && nameOf(child->program()) == name) {
            found.push_back(child);
        }
    }
    return found;
}

std::vector<std::string> VirtualChildProcesses::commands() const {
    std::vector<std::string> lines;
    for (const auto& child : children_) {
        std::string line = nameOf(child->program());
        for (const std::string& argument : child->arguments()) {
            line += " " + argument;
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace rb
