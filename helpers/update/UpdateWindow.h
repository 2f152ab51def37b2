#pragma once

#include "helpers/update/UpdateView.h"

#include <QDialog>

#include <functional>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace rb {

// One window for the whole check: the program's icon, a heading, what it means, then what is new or how far it is,
// and the buttons with the default one at the right. Escape and the close button end the check.
class UpdateWindow final : public QDialog, public UpdateView {
public:
    struct Acts {
        std::function<void()> install; // the user wants the offered version
        std::function<void()> closed;  // the window is gone; told once
    };
    explicit UpdateWindow(Acts acts);

    void present();

    void showChecking() override;
    void showUpToDate(const std::string& version) override;
    void showOffer(const UpdateOffer& offer) override;
    void showDownload(std::uint64_t received, std::uint64_t whole) override;
    void showVerifying() override;
    void showHandedOver() override;
    void showProblem(UpdateProblem problem, const std::string& detail) override;

    void reject() override;

private:
    // What the window shows at one time; absent parts are hidden.
    struct Page {
        QString heading;
        QString text = {};
        QString notes = {};
        bool progress = false;
        QString button = {}; // the default one; hidden when empty
        QString cancel = {}; // the other one
        std::function<void()> act = {};
    };
    void show(const Page& page);
    void fit();

    Acts acts_;
    std::function<void()> act_;
    QLabel* heading_;
    QLabel* text_;
    QPlainTextEdit* notes_;
    QProgressBar* progress_;
    QPushButton* button_;
    QPushButton* cancel_;
};

// What stands in the notes, without markup and without anything being loaded from anywhere.
QString plainNotes(const std::string& notes);
// "12.3 MB".
QString shownSize(std::uint64_t bytes);

} // namespace rb
