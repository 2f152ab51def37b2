#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/Screens.h"

#include <QObject>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

class QScreen;

namespace rb {

class RunLoop;

// A strip along one edge of the whole desktop that a window keeps for itself (_NET_WM_STRUT_PARTIAL), in X11 pixels.
struct Strut {
    std::int32_t left = 0, right = 0, top = 0, bottom = 0;
    std::int32_t leftStart = 0, leftEnd = 0, rightStart = 0, rightEnd = 0;
    std::int32_t topStart = 0, topEnd = 0, bottomStart = 0, bottomEnd = 0;
};
// What the struts leave of a screen on a desktop of that size. A strut that would take half the screen or more
// belongs to another screen.
QRect areaWithoutStruts(const QRect& screen, const QSize& desktop, const std::vector<Strut>& struts);

// The screens as Qt sees them, the primary one first.
class LinuxScreens final : public Screens {
public:
    LinuxScreens(XConnection& connection, RunLoop& runLoop);

    std::vector<Screen> all() const override;
    std::optional<Screen> main() const override;
    bool showsFullScreenSpace(std::uint32_t id) const override;
    Handle onChange(std::function<void()> changed) override;

    // Rook Bay's own menu bar keeps this height, in points, at the top of the primary screen, also where no window
    // manager tells so.
    void setOwnMenuBarHeight(double height);

private:
    void watch(QScreen* screen);
    // Qt tells of one change in several steps; the answer waits until they are through.
    void somethingChanged();
    void compare();
    void followWorkArea();
    QRect visibleArea(const QScreen& screen) const;
    std::vector<Strut> struts() const;
    std::uint32_t idOf(const QScreen& screen) const;
    Screen describe(const QScreen& screen) const;

    XConnection& connection_;
    RunLoop& runLoop_;
    double ownMenuBarHeight_ = 0;
    bool watching_ = false; // once somebody has asked
    bool comparing_ = false;
    std::vector<Screen> last_;
    // An output keeps its number for as long as the process lives.
    mutable std::map<std::string, std::uint32_t> ids_;
    Observers<> observers_;
    QObject receiver_; // its connections end with it
    Handle rootEvents_;
    Lifetime lifetime_;
};

} // namespace rb
