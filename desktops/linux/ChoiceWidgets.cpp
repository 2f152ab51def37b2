#include "desktops/linux/ChoiceWidgets.h"

#include <QAbstractItemView>
#include <QWheelEvent>

#include <utility>

namespace rb {

namespace {

constexpr int popUpHeight = 28;

} // namespace

CheckBoxWidget::CheckBoxWidget(QWidget& parent)
    : QCheckBox(&parent) {
    connect(this, &QCheckBox::clicked, this, [this](bool on) {
        // By copy: the action may render the content anew.
        if (const auto action = box_.action) {
            action(on);
        }
    });
}

bool CheckBoxWidget::show(ViewContent& content) {
    auto* box = std::get_if<CheckBoxView>(&content);
    if (!box) {
        return false;
    }
    box_ = std::move(*box);
    setText(QString::fromStdString(box_.title).replace(QLatin1Char('&'), QStringLiteral("&&")));
    setChecked(box_.on);
    return true;
}

QSizeF CheckBoxWidget::contentSize(double /*availableWidth*/) const {
    return sizeHint();
}

PopUpWidget::PopUpWidget(QWidget& parent)
    : QComboBox(&parent) {
    setFocusPolicy(Qt::TabFocus);
    setMaxVisibleItems(16);
    connect(this, &QComboBox::activated, this, [this](int index) {
        const auto changed = popUp_.selectionChanged;
        if (changed && index >= 0) {
            changed(static_cast<std::size_t>(index));
        }
    });
}

bool PopUpWidget::show(ViewContent& content) {
    auto* popUp = std::get_if<PopUpView>(&content);
    if (!popUp) {
        return false;
    }
    if (popUp_.items != popUp->items || count() == 0) {
        QStringList items;
        for (const std::string& item : popUp->items) {
            items.append(QString::fromStdString(item));
        }
        clear();
        addItems(items);
    }
    popUp_ = std::move(*popUp);
    // The list is a window of its own and would be light in a dark one.
    view()->setPalette(window()->palette());
    setCurrentIndex(count() == 0 ? -1 : static_cast<int>(popUp_.selected.value_or(0)));
    setEnabled(popUp_.enabled);
    return true;
}

QSizeF PopUpWidget::contentSize(double /*availableWidth*/) const {
    return {static_cast<double>(sizeHint().width()), popUpHeight};
}

void PopUpWidget::wheelEvent(QWheelEvent* event) {
    event->ignore(); // the page takes it
}

} // namespace rb
