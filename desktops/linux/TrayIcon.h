#pragma once

#include "desktops/linux/StatusBar.h"

#include <QAbstractNativeEventFilter>
#include <QPixmap>
#include <QWidget>

#include <memory>
#include <xcb/xcb.h>

namespace rb {

class MenuWidget;

// An item in an XEmbed tray: a small window that the tray takes into its own.
class TrayIcon final : public QWidget, public StatusItemPresenter, private QAbstractNativeEventFilter {
public:
    TrayIcon(LinuxStatusItem& item, XConnection& connection, xcb_window_t tray, const Pictures& pictures,
             const LinuxAppearance& appearance);
    ~TrayIcon() override;
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    void imageChanged() override { update(); }
    void toolTipChanged() override;
    void menuChanged() override;
    void popUpMenu(std::shared_ptr<Menu> menu) override;
    std::optional<QRect> areaOnScreen() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
    void dock(xcb_window_t tray);
    bool traysVisualHasAlpha(xcb_window_t tray) const;
    QPoint cornerOnScreen() const;
    void lookBeside();

    LinuxStatusItem& item_;
    XConnection& connection_;
    const Pictures& pictures_;
    const LinuxAppearance& appearance_;
    QPixmap beside_; // the column of the panel's pixels left of the icon, once looked at
    bool darkBehind_ = false;
    std::shared_ptr<Menu> shownMenu_;
    std::unique_ptr<MenuWidget> menu_;
};

} // namespace rb
