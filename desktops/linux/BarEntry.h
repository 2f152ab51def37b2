#pragma once

#include <QRect>

#include <string>

namespace rb {

// One thing in our own menu bar: an item of ours or another program's icon. Main thread only.
class BarEntry {
public:
    virtual ~BarEntry() = default;

    // By which its place is remembered.
    virtual std::string name() const = 0;
    // In points; 0 while it takes no place.
    virtual int breadth() const = 0;
    // In the bar's coordinates. What has left the bar lies left of it and lives on; an empty area hides.
    virtual void placeAt(const QRect& area) = 0;
    virtual void themeChanged() {}
};

} // namespace rb
