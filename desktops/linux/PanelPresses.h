#pragma once

#include <QApplication>
#include <QMouseEvent>

namespace rb {

// Counts the presses of a multiple click: those that follow one another quickly and in the same place.
class PanelPresses {
public:
    void pressed(const QMouseEvent& event) {
        const bool again = count_ > 0 && event.timestamp() - time_ <= quint64(QApplication::doubleClickInterval()) &&
                           (event.globalPosition() - place_).manhattanLength() <= QApplication::startDragDistance();
        count_ = again ? count_ + 1 : 1;
        time_ = event.timestamp();
        place_ = event.globalPosition();
    }
    int clickCount() const { return count_; }

private:
    int count_ = 0;
    quint64 time_ = 0; // milliseconds
    QPointF place_;
};

} // namespace rb
