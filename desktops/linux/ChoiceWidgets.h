#pragma once

#include "desktops/linux/RealizedView.h"

#include <QCheckBox>
#include <QComboBox>

namespace rb {

class CheckBoxWidget final : public QCheckBox, public RealizedView {
public:
    explicit CheckBoxWidget(QWidget& parent);
    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;

private:
    CheckBoxView box_;
};

// A pop-up button. The wheel doesn't change it, which would happen by accident in a page that scrolls.
class PopUpWidget final : public QComboBox, public RealizedView {
public:
    explicit PopUpWidget(QWidget& parent);
    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    PopUpView popUp_;
};

} // namespace rb
