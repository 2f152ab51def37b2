#pragma once

#include "platform/ChildProcesses.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace rb {

class VirtualRunLoop;

// A started program as the test plays it. It lives on after the product has let go of it.
class VirtualChild {
public:
    VirtualChild(VirtualRunLoop& loop, ChildStart start)
        : loop_(loop)
        , start_(std::move(start))
        , inputClosed_(!start_.pipesInput) {}

    const std::string& program() const { return start_.program; }
    const std::vector<std::string>& arguments() const { return start_.arguments; }
    // What came on its standard input so far.
    const std::string& input() const { return input_; }
    bool inputClosed() const { return inputClosed_; }
    bool isRunning() const { return running_; }
    bool wasKilled() const { return killed_; }

    // Writes to its standard output, in a later turn of the loop.
    void say(const std::string& text);
    // Ends, after what it said has arrived.
    void exit();
    // A helper that hangs on SIGKILL until the test lets it go.
    void setDiesOfKill(bool dies) { diesOfKill_ = dies; }

private:
    friend class VirtualChildProcesses;
    friend class VirtualChildHandle;

    VirtualRunLoop& loop_;
    ChildStart start_;
    std::string input_;
    std::map<std::string, std::string>* files_ = nullptr;
    bool inputClosed_;
    bool running_ = true;
    bool killed_ = false;
    bool diesOfKill_ = true;
    bool attached_ = true; // the product still holds it
};

// Programs that the test plays: by a script for each name, or by hand.
class VirtualChildProcesses final : public ChildProcesses {
public:
    explicit VirtualChildProcesses(VirtualRunLoop& loop)
        : loop_(loop) {}

    std::optional<std::string> resourcePath(const std::string& name) const override;
    std::unique_ptr<ChildProcess> start(ChildStart start) override;
    std::optional<std::string> createTemporaryFile(const std::string& name) override;
    std::optional<std::string> takeTemporaryFile(const std::string& path, std::size_t limit) override;

    using Script = std::function<void(VirtualChild&)>;
    // The program is among the resources from now on; the script, where there is one, plays it when it starts.
    void install(const std::string& name, Script script = nullptr);
    void uninstall(const std::string& name) { installed_.erase(name); }
    // Programs are there but can't be started.
    void setStartsFail(bool fail) { startsFail_ = fail; }
    void setTemporaryFilesFail(bool fail) { filesFail_ = fail; }

    // All that were started, in order.
    const std::vector<std::shared_ptr<VirtualChild>>& children() const { return children_; }
    // Those of one name that still run.
    std::vector<std::shared_ptr<VirtualChild>> running(const std::string& name) const;
    // Arguments of every start, "DisplayHelper probe 1".
    std::vector<std::string> commands() const;
    const std::map<std::string, std::string>& temporaryFiles() const { return files_; }

private:
    VirtualRunLoop& loop_;
    std::map<std::string, Script> installed_;
    std::map<std::string, std::string> files_;
    std::vector<std::shared_ptr<VirtualChild>> children_;
    bool startsFail_ = false;
    bool filesFail_ = false;
};

} // namespace rb
