#pragma once

#include <QTimer>
#include <QWidget>

namespace rb {

class LinuxAppearance;

// Date and time at the right end of our own menu bar; wakes once a minute. Always equally wide, so that the icons
// beside it stay where they are.
class BarClock final : public QWidget {
public:
    // In points.
    static constexpr int breadth = 132;

    BarClock(QWidget& bar, const LinuxAppearance& appearance);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void tick();

    const LinuxAppearance& appearance_;
    QString text_;
    QTimer nextMinute_;
};

} // namespace rb
