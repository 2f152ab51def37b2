#pragma once

#include "platform/Alerts.h"

#include <QDialog>

#include <functional>
#include <vector>

class QPushButton;

namespace rb {

// One question: the program's icon, the message, what it means, and the buttons with the default one at the right.
// Escape and the close button choose the last button of the list.
class AlertDialog final : public QDialog {
public:
    AlertDialog(const Alert& alert, std::function<void(std::size_t button)> answer);

    // On the screen with the pointer, in front of the program's other windows.
    void present();
    // Belonging to a window, which waits for the answer; over its middle.
    void presentOn(QWidget& window);
    // In the order of the alert's list.
    const std::vector<QPushButton*>& buttons() const { return buttons_; }

    void reject() override { choose(buttons_.size() - 1); }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // Where all of it can be reached, also when its window can't be.
    void stayOnScreen();
    void choose(std::size_t button);

    std::function<void(std::size_t)> answer_;
    std::vector<QPushButton*> buttons_;
};

} // namespace rb
