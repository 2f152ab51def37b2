#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/Displays.h"

#include <memory>

namespace rb {

class RunLoop;
struct RandrOutput;
struct RandrState;

// A RandR output as the product sees it. A scaled output shows more or fewer points than its mode has pixels.
ConnectedDisplay displayOf(const RandrOutput& output, const RandrState& state);

// The outputs that show something, from RandR and their EDID. A display's number is that of its output, which lasts as
// long as the X server does.
class LinuxDisplays final : public Displays {
public:
    LinuxDisplays(XConnection& connection, RunLoop& runLoop);

    std::vector<ConnectedDisplay> all() const override;
    std::optional<ConnectedDisplay> display(std::uint32_t id) const override;
    Handle onChange(std::function<void()> changed) override;

private:
    void follow();

    XConnection& connection_;
    RunLoop& runLoop_;
    Observers<> observers_;
    Handle events_;
    bool telling_ = false; // one change comes in several events
    Lifetime lifetime_;
};

} // namespace rb
