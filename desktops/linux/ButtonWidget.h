#pragma once

#include "desktops/linux/RealizedView.h"

#include <QPushButton>

namespace rb {

// A push button; clicking it doesn't take the keyboard from the first responder.
class ButtonWidget final : public QPushButton, public RealizedView {
public:
    ButtonWidget(QWidget& parent, ContentSurroundings& surroundings);

    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;
    QMarginsF outset() const override;
    void themeChanged() override;

    const std::string& keyEquivalent() const { return button_.keyEquivalent; }
    bool isDefault() const { return button_.keyEquivalent == "\r" || button_.prominent; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintPlain();

    ContentSurroundings& surroundings_;
    ButtonView button_;
};

} // namespace rb
