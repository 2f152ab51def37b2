#pragma once

#include "desktops/linux/TrayClient.h"

#include <QAbstractNativeEventFilter>

#include <memory>
#include <vector>

namespace rb {

class LinuxAppearance;
class MenuBar;
class XConnection;

// The session's system tray (XEmbed): owns the tray selection and takes icons into our own menu bar. All of it happens
// on Qt's connection, which made the bar's window: should the program die, the server then puts the icons back on the
// root window, unmapped, where they wait for the next tray. Main thread only.
class TrayHost final : private QAbstractNativeEventFilter {
public:
    static constexpr std::size_t mostIcons = 64;

    // All of them outlive it. Owns nothing yet.
    TrayHost(MenuBar& bar, XConnection& connection, const LinuxAppearance& appearance);
    // Lets every icon go.
    ~TrayHost() override;
    TrayHost(const TrayHost&) = delete;
    TrayHost& operator=(const TrayHost&) = delete;

    // The window that stands for the tray.
    xcb_window_t window() const { return window_; }
    // Takes the selection and calls for the icons; false when another tray has it.
    bool begin();
    void themeChanged();

private:
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
    void requested(const xcb_client_message_event_t& request);
    void dock(xcb_window_t icon);
    void writeColors();
    void announce(xcb_timestamp_t time);

    MenuBar& bar_;
    XConnection& connection_;
    const LinuxAppearance& appearance_;
    xcb_connection_t* x_; // Qt's
    xcb_window_t window_;
    xcb_atom_t selection_;
    xcb_atom_t opcode_;
    bool owner_ = false;
    std::vector<std::unique_ptr<TrayClient>> clients_;
};

} // namespace rb
