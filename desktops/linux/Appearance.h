#pragma once

#include "desktops/linux/Theme.h"
#include "platform/Appearance.h"
#include "platform/Observers.h"
#include "platform/UserDefaults.h"

#include <QVariant>

#include <memory>
#include <optional>

class QDBusMessage;

namespace rb {

class BusSignal;
class LinuxStyle;

// Light or dark as the user says for this program (user default LinuxAppearance), else as the session's settings
// portal says, else as GTK's settings or the session's palette look. Installs the style and the palette, so Qt's
// application must exist; the portal is asked once the event loop runs and may change the answer then.
class LinuxAppearance final : public Appearance {
public:
    explicit LinuxAppearance(const UserDefaults& defaults);
    ~LinuxAppearance() override;
    LinuxAppearance(const LinuxAppearance&) = delete;
    LinuxAppearance& operator=(const LinuxAppearance&) = delete;

    bool isDark() const override { return theme_.dark; }
    Color color(SystemColor color) const override;
    Handle onChange(std::function<void()> changed) override { return observers_.add(std::move(changed)); }

    const Theme& theme() const { return theme_; }
    // Reads the user's own choice anew.
    void refresh();

private:
    void followPortal();
    void askPortal(const QString& key);
    void portalSaid(const QString& key, QVariant value);

    const UserDefaults& defaults_;
    bool sessionLooksDark_;
    std::optional<bool> portalDark_;
    QColor accent_;
    Theme theme_;
    LinuxStyle* style_; // the application's
    Observers<> observers_;
    std::unique_ptr<BusSignal> settingChanged_;
    Lifetime lifetime_;
};

} // namespace rb
