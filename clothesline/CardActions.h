#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"

namespace rb {

class RBClothesline;
class Toasts;

// What can be done with one card's file.
class CardActions {
public:
    CardActions(const Desktop& desktop, RBClothesline& line, Toasts& toasts)
        : desktop_(desktop)
        , line_(line)
        , toasts_(toasts) {}

    // The file and, for a picture, its PNG onto the general pasteboard. Nothing for an item that left the line.
    void copyItem(const RBPegItemRef& item);
    void openItem(const RBPegItem& item);
    void revealItem(const RBPegItem& item);
    void copyPathOf(const RBPegItem& item);
    // The card falls once the file is in the Trash; after a failure it stays.
    void trashItem(const RBPegItemRef& item);
    // Moves the file to the Desktop under a free name.
    void saveToDesktop(const RBPegItemRef& item);

private:
    const Desktop& desktop_;
    RBClothesline& line_;
    Toasts& toasts_;
};

} // namespace rb
