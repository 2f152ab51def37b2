#pragma once

#include "desktops/linux/RealizedView.h"
#include "platform/Window.h"

#include <QWidget>

#include <vector>

class QVariantAnimation;

namespace rb {

// Children in a row, from the top or from the left.
class StackWidget final : public QWidget, public RealizedView {
public:
    StackWidget(QWidget& parent, ContentSurroundings& surroundings);

    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;
    void layOut() override;
    std::vector<RealizedView*> children() const override { return views_; }

    // Lets the children come into view one after another.
    void reveal(const Reveal& reveal);

private:
    // Of the entrance, after that many seconds; the end takes its traces away.
    void showEntrance(const Reveal& reveal, double seconds);
    void endEntrance();

    struct Measured {
        std::vector<QSizeF> sizes;
        double length = 0; // along the stack, gaps included
        double breadth = 0;
        int spacers = 0;
    };
    Measured measure(double availableWidth) const;
    bool isVertical() const { return stack_.orientation == Orientation::Vertical; }
    double along(const QSizeF& size) const { return isVertical() ? size.height() : size.width(); }
    double across(const QSizeF& size) const { return isVertical() ? size.width() : size.height(); }
    double gapAfter(std::size_t index) const;

    bool isEqually() const { return stack_.distribution == StackDistribution::FillEqually && !isVertical(); }

    ContentSurroundings& surroundings_;
    StackView stack_; // without its children
    std::vector<RealizedView*> views_;
    std::vector<QRectF> frames_; // of the views, at rest
    QVariantAnimation* entrance_ = nullptr;
};

// Takes the room that is left.
class SpacerWidget final : public QWidget, public RealizedView {
public:
    explicit SpacerWidget(QWidget& parent);
    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override { return std::holds_alternative<SpacerView>(content); }
    QSizeF contentSize(double /*availableWidth*/) const override { return {0, 0}; }
    bool isSpacer() const override { return true; }
};

} // namespace rb
