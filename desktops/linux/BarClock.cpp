#include "desktops/linux/BarClock.h"

#include "desktops/linux/Appearance.h"

#include <QDateTime>
#include <QLocale>
#include <QPainter>

namespace rb {

namespace {

constexpr int minute = 60'000; // milliseconds
constexpr int textSize = 13;

} // namespace

BarClock::BarClock(QWidget& bar, const LinuxAppearance& appearance)
    : QWidget(&bar)
    , appearance_(appearance) {
    nextMinute_.setSingleShot(true);
    connect(&nextMinute_, &QTimer::timeout, this, [this] { tick(); });
    tick();
}

void BarClock::tick() {
    const QDateTime now = QDateTime::currentDateTime();
    const QLocale chinese(QLocale::Chinese, QLocale::China);
    text_ = chinese.toString(now, QStringLiteral("M月d日 ddd HH:mm"));
    setToolTip(chinese.toString(now, QStringLiteral("yyyy年M月d日 dddd")));
    setAccessibleName(text_);
    update();
    // Never longer than a minute, because the clock may be set and the machine may sleep.
    const int into = now.time().second() * 1000 + now.time().msec();
    nextMinute_.start(minute - into + 20);
}

void BarClock::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QFont clock = font();
    clock.setPixelSize(textSize);
    painter.setFont(clock);
    painter.setPen(appearance_.theme().label);
    const QString shown = painter.fontMetrics().elidedText(text_, Qt::ElideLeft, width());
    painter.drawText(rect().adjusted(0, 0, 0, -1), Qt::AlignRight | Qt::AlignVCenter, shown);
}

} // namespace rb
