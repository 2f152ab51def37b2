#pragma once

#include "desktops/linux/UniqueFd.h"
#include "platform/Application.h"
#include "platform/Handle.h"

#include <QSessionManager>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace rb {

class Log;
class SingleInstance;
class XConnection;

// The running program on Qt's application. A termination signal, the end of the session and the loss of the X server
// all lead to the delegate's last call, exactly once.
class LinuxApplication final : public Application {
public:
    // The X server is known to be there (`connection`); Qt would end the process without one.
    LinuxApplication(std::vector<std::string> arguments, XConnection& connection, SingleInstance& instance, Log& log);
    ~LinuxApplication() override;
    LinuxApplication(const LinuxApplication&) = delete;
    LinuxApplication& operator=(const LinuxApplication&) = delete;

    int run(ApplicationDelegate& delegate) override;
    void terminate() override;
    // Nothing to do: a program without windows has no place in a panel or dock here.
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    std::vector<std::string> arguments() const override { return arguments_; }
    // From info.json beside the executable or in the data folders of the system.
    std::optional<std::string> infoString(const std::string& key) const override;

    // Null while the program doesn't run.
    ApplicationDelegate* delegate() const { return delegate_; }
    // Runs after the delegate's last call, however the program ends.
    void setLastWork(std::function<void()> work) { lastWork_ = std::move(work); }

private:
    class QtApplication;

    // Does what a command asks for ("hang", "new-text"); false when the arguments are none.
    bool obeyCommand(const std::vector<std::string>& arguments);
    void catchSignals();
    void tellWillTerminate();
    void readInfo() const;

    std::vector<std::string> arguments_;
    XConnection& connection_;
    SingleInstance& instance_;
    Log& log_;
    std::unique_ptr<QtApplication> application_;
    ApplicationDelegate* delegate_ = nullptr; // while it runs
    bool terminated_ = false;
    std::function<void()> lastWork_;
    UniqueFd signals_; // the reading end
    mutable bool infoRead_ = false;
    mutable std::map<std::string, std::string> info_;
};

} // namespace rb
