#pragma once

#include "desktops/linux/BarEntry.h"

#include <QElapsedTimer>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace rb {

class LinuxAppearance;
class MenuBar;

// One icon of another program in our own menu bar: its window inside a small window of ours, which gives it its place,
// its size and what is behind it. Nothing that the icon asks for is taken on trust. Main thread only.
class TrayClient final : public BarEntry {
public:
    // On the connection that made the bar's window. Null when there is no such window (any more).
    static std::unique_ptr<TrayClient> embed(xcb_connection_t* x, xcb_window_t icon, MenuBar& bar,
                                             const LinuxAppearance& appearance);
    // Puts the icon back on the root window, unmapped, unless it has left by itself.
    ~TrayClient() override;
    TrayClient(const TrayClient&) = delete;
    TrayClient& operator=(const TrayClient&) = delete;

    xcb_window_t icon() const { return icon_; }

    enum class Outcome { Stays, Gone };
    // Any event of the connection.
    Outcome handle(const xcb_generic_event_t& event);

    std::string name() const override { return name_; }
    int breadth() const override;
    void placeAt(const QRect& area) override;
    void themeChanged() override;

private:
    TrayClient(xcb_connection_t* x, xcb_window_t icon, xcb_window_t root, MenuBar& bar,
               const LinuxAppearance& appearance);
    void takeIn();
    void readInfo();
    void setMapped(bool mapped);
    void giveSize();
    void tellSize();
    void redraw();
    void drawBehind();
    void changed();
    enum class Looking { Soon, AtRest };
    void look(Looking looking);
    std::uint32_t behind() const;
    int pixels(double points) const;

    xcb_connection_t* x_;
    xcb_window_t icon_;
    xcb_window_t root_;
    xcb_window_t container_;
    MenuBar& bar_;
    const LinuxAppearance& appearance_;
    std::string name_;
    xcb_atom_t info_;
    bool mapped_ = false;
    bool gone_ = false;
    bool shown_ = false; // the container
    QRect area_;
    bool plated_ = false; // it can't be seen on the bar itself
    std::uint8_t depth_ = 0;
    QTimer firstLook_;  // when it has drawn itself
    QTimer secondLook_; // when it draws no more
    QElapsedTimer lastLook_;
    std::uint32_t damage_ = XCB_NONE; // tells of its drawing, once until the next look
    int damageEvent_ = -1;
    int corrections_ = 0; // of sizes that the icon gave itself
};

} // namespace rb
