#pragma once

#include "desktops/linux/BarDrag.h"
#include "desktops/linux/BarEntry.h"
#include "desktops/linux/BarOrder.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace rb {

class BarClock;
class LinuxAppearance;
class XConnection;

// Our own menu bar: a strip along the top edge of the primary screen that window managers keep free. Its entries
// stand at its right end, beside the clock; where the user hasn't moved them, newer ones to the left of older ones.
// What finds no room leaves the bar at its left end and lives on.
class MenuBar final : public QWidget {
public:
    // In points.
    static constexpr int thickness = 28;

    // The order outlives it; `arranged` is told after the user moved an entry.
    MenuBar(XConnection& connection, const LinuxAppearance& appearance, BarOrder& order,
            std::function<void()> arranged);
    ~MenuBar() override;
    MenuBar(const MenuBar&) = delete;
    MenuBar& operator=(const MenuBar&) = delete;

    // The entry takes itself out again before it goes.
    void addEntry(BarEntry& entry);
    void removeEntry(BarEntry& entry);
    // An entry asks for another width or has another name.
    void layOutEntries();
    void themeChanged();

    const LinuxAppearance& appearance() const { return appearance_; }
    // What of the bar's height entries may take: the hairline at its lower edge is no part of them.
    static constexpr int entryHeight = thickness - 1;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Placed {
        BarEntry* entry = nullptr;
        std::string key = {}; // its name, made different from the others'
        QRect area = {};
    };

    void placeOnScreen();
    void makeSureOfMapping();
    void keepSpaceFree();
    void nameEntries();
    void dragBegan(int x);
    void dragMoved(int x);
    void dragEnded();

    XConnection& connection_;
    const LinuxAppearance& appearance_;
    BarOrder& order_;
    std::function<void()> arranged_;
    BarClock* clock_;             // a child
    std::vector<Placed> entries_; // from the right
    BarEntry* dragged_ = nullptr;
    int grip_ = 0;  // from the dragged entry's left edge to the pointer, in points
    int dragX_ = 0; // where the dragged entry's left edge is
    std::unique_ptr<BarDrag> drag_;
    QMetaObject::Connection screenGeometry_;
    int mappings_ = 1;
};

} // namespace rb
