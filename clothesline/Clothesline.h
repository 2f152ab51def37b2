#pragma once

#include "clothesline/CardActions.h"
#include "clothesline/CardFall.h"
#include "clothesline/CardMenu.h"
#include "clothesline/CardMotion.h"
#include "clothesline/DragOut.h"
#include "clothesline/DropCatcher.h"
#include "clothesline/FileTransit.h"
#include "clothesline/FolderDrops.h"
#include "clothesline/LineCaptures.h"
#include "clothesline/LineInput.h"
#include "clothesline/LineItems.h"
#include "clothesline/LineMenu.h"
#include "clothesline/LinePanel.h"
#include "clothesline/LineTick.h"
#include "clothesline/PegItem.h"
#include "clothesline/QuickLook.h"
#include "clothesline/Reorder.h"
#include "platform/Desktop.h"
#include "platform/Menu.h"
#include "platform/PreviewPanel.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace rb {

class Toasts;

// The clothesline: files and folders hang as cards on a rope under the menu bar. One face for its parts, which keep
// their own state: the items, the panel, the motion, the fall, the watch over the pointer, and what hands do with the
// cards. Main thread only.
class RBClothesline {
public:
    RBClothesline(const Desktop& desktop, Toasts& toasts);
    RBClothesline(const RBClothesline&) = delete;
    RBClothesline& operator=(const RBClothesline&) = delete;
    ~RBClothesline();

    void start();
    // Ends what the start began: the line goes up and watches nothing, the screenshot settings are the user's own. The
    // cards stay for the next start.
    void stop();
    const std::shared_ptr<Menu>& menu() const { return lineMenu_.menu(); }
    void beginPreviewPanelControl(PreviewPanel& panel) { quickLook_.beginPreviewPanelControl(panel); }
    void endPreviewPanelControl(PreviewPanel& panel) { quickLook_.endPreviewPanelControl(panel); }

    // Screenshots.
    void restoreScreenshotSettings() { captures_.restoreScreenshotSettings(); }
    void applyScreenshotSettings() { captures_.applyScreenshotSettings(); }
    void startWatcher() { captures_.startWatcher(); }
    void stopWatcher() { captures_.stopWatcher(); }
    // Switches the takeover of the system's screenshot settings, and stores whether it is on.
    void setInbox(bool on) { captures_.setInbox(on); }
    void hangCapture(const std::string& path) { captures_.hangCapture(path); }
    // The file lies in the folder of the program's own screenshots.
    bool isInInbox(const std::string& path) const { return captures_.inbox().contains(path); }

    // Every test of a setting of the clothesline.
    bool setting(const std::string& key) const;
    // A sound, if sounds are on.
    void play(const std::string& name, double volume) const;
    void playTrash() const;

    // Items, oldest first.
    const std::vector<RBPegItemRef>& items() const { return items_.all(); }
    RBPegItemRef itemForPath(const std::string& path) const { return items_.itemForPath(path); }
    std::size_t capacity() const;
    RBPegItemRef hangURL(const std::string& path, LineItems::HangOptions options) { return items_.hang(path, options); }
    // Hangs files one after another on the line, which comes down to show them.
    void hangFiles(const std::vector<std::string>& paths);
    // The first at once and with its sound, the others in short steps.
    void hangOneByOne(const std::vector<std::string>& paths);
    bool contains(const RBPegItem& item) const { return items_.contains(item); }
    // The same items in another order.
    void setOrder(std::vector<RBPegItemRef> order) { items_.setOrder(std::move(order)); }
    void save() const { items_.save(); }
    void itemRemoved(RBPegItem& item) { reorder_.itemRemoved(item); }
    void lineBecameEmpty() { items_.lineBecameEmpty(); }
    void removeItem(const RBPegItemRef& item, LineItems::RemoveOptions options) { items_.remove(item, options); }
    void takeDown(const RBPegItemRef& item) { items_.takeDown(item); }
    void takeDownItems(const std::vector<RBPegItemRef>& items) { items_.takeDownAll(items); }
    void prune() { items_.prune(); }

    // The line itself.
    bool revealed() const { return panel_.revealed(); }
    void setRevealed(bool revealed);
    void placeOnScreen(const std::optional<Screen>& screen) { panel_.placeOnScreen(screen); }
    bool pinned() const { return tick_.pinned; }
    void setPinned(bool pinned) { tick_.pinned = pinned; }
    void setPeekUntil(double time) { tick_.peekUntil = time; }
    bool dragActive() const { return catcher_.dragActive(); }
    // A card is in the user's hand: on its way out or along the line.
    bool draggingOut() const { return dragOut_.isUnderWay() || reorder_.isUnderWay(); }
    bool menuShowing() const { return cardMenu_.isShowing(); }
    bool quickLookVisible() const { return quickLook_.isVisible(); }
    Rect panelFrame() const { return panel_.frame(); }
    std::optional<Screen> panelScreen() const { return panel_.screen(); }
    double width() const { return panel_.width(); }
    double scale() const { return panel_.scale(); }
    bool isVisible() const { return panel_.isVisible(); }
    void setIgnoresMouseEvents(bool ignores) { panel_.setIgnoresMouseEvents(ignores); }
    bool setMouseAreas(const std::vector<Rect>& areas) { return panel_.setMouseAreas(areas); }
    void updateHint();
    const std::shared_ptr<Layer>& dropGlow() const { return panel_.dropGlow(); }
    const std::shared_ptr<Layer>& ropeCore() const { return panel_.ropeCore(); }

    // Hands.
    FileTransit& transit() { return transit_; }
    CardActions& actions() { return actions_; }
    CardMenu& cardMenu() { return cardMenu_; }
    DragOut& dragOut() { return dragOut_; }
    Reorder& reorder() { return reorder_; }
    FolderDrops& folderDrops() { return folderDrops_; }
    DropCatcher& catcher() { return catcher_; }
    void quickLookItem(const RBPegItemRef& item) { quickLook_.quickLookItem(item); }
    void beginDrag(const FileDrag& drag) { panel_.panel().beginDrag(drag); }
    void showContextMenu(const std::shared_ptr<Menu>& menu, Point location, std::function<void()> closed) {
        panel_.panel().showContextMenu(menu, location, std::move(closed));
    }

    // Motion and look.
    void hangLayer(const std::shared_ptr<Layer>& swing) { panel_.slide()->addSublayer(swing); }
    void layout(CardMotion::LayoutOptions options) { motion_.layout(options); }
    void arrive(RBPegItem& item) { motion_.arrive(item); }
    void nudge(RBPegItem& item, double degrees) { motion_.nudge(item, degrees); }
    void fall(RBPegItem& item);
    void showPill(const RBPegItemRef& item);

private:
    const Desktop& desktop_;
    FileTransit transit_;
    CardActions actions_;
    CardMenu cardMenu_;
    QuickLook quickLook_;
    DragOut dragOut_;
    Reorder reorder_;
    FolderDrops folderDrops_;
    LineInput input_;
    LineMenu lineMenu_;
    DropCatcher catcher_;
    LineItems items_;
    CardMotion motion_;
    CardFall fall_;
    RBLinePanel panel_;
    LineTick tick_;
    LineCaptures captures_;
    DelayedCalls later_;
    Handle screensWatch_;
    bool started_ = false;
};

} // namespace rb
